# SPDX-License-Identifier: MIT
# Installation and Debian packages.
#
#   cmake --install <build> [--prefix <dir>]   padkit, padkit-tune and
#       padkit-memtest to sbin (root tools), the sims to bin, man pages, bash
#       completion for every name
#   cpack --config <build>/CPackConfig.cmake   padkit_<version>_<arch>.deb
#
# A native build packages padkit and padkit-sim for the build machine's
# architecture; a cross build packages padkit alone, for the target's
# architecture (armhf, arm64), usually built with -DPADKIT_STATIC=ON.

include(GNUInstallDirs)

set(padkit_completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(padkit_completion_script ${PROJECT_BINARY_DIR}/completion/padkit.bash)
set(padkit_doc ${PROJECT_BINARY_DIR}/doc)
set(CPACK_PACKAGE_CONTACT "padkit developers <padkit@example.org>")

# The man pages carry the project's version; the Debian changelog and
# copyright file the version, the contact and the licence of this tree.
foreach(page padkit.8 padkit-tune.8 padkit-memtest.8 padkit-sim.1 padkit-tune-sim.1
        padkit-memtest-sim.1)
    configure_file(${PROJECT_SOURCE_DIR}/doc/${page} ${padkit_doc}/${page} @ONLY)
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${padkit_doc}/changelog @ONLY)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE padkit_license_text)
string(FIND "${padkit_license_text}" "Permission is hereby granted" padkit_license_start)
string(SUBSTRING "${padkit_license_text}" ${padkit_license_start} -1 padkit_license_text)
string(STRIP "${padkit_license_text}" padkit_license_text)
string(REPLACE "\n\n" "\n.\n" padkit_license_text "${padkit_license_text}")
string(REPLACE "\n" "\n " padkit_license_text " ${padkit_license_text}")
configure_file(${PROJECT_SOURCE_DIR}/packaging/copyright.in ${padkit_doc}/copyright @ONLY)

# Man pages and changelog are installed compressed, as Debian wants them.
set(padkit_compressed "")
foreach(file padkit.8 padkit-tune.8 padkit-memtest.8 padkit-sim.1 padkit-tune-sim.1
        padkit-memtest-sim.1 changelog)
    add_custom_command(OUTPUT ${padkit_doc}/${file}.gz
        COMMAND gzip -9nkf ${padkit_doc}/${file}
        DEPENDS ${padkit_doc}/${file}
        VERBATIM)
    list(APPEND padkit_compressed ${padkit_doc}/${file}.gz)
endforeach()
add_custom_target(padkit_compressed_docs ALL DEPENDS ${padkit_compressed})

install(TARGETS padkit padkit-tune padkit-memtest RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(FILES ${padkit_doc}/padkit.8.gz ${padkit_doc}/padkit-tune.8.gz
              ${padkit_doc}/padkit-memtest.8.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES ${padkit_completion_script} DESTINATION ${padkit_completions} RENAME padkit)
install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-tune.bash
        DESTINATION ${padkit_completions} RENAME padkit-tune)
install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-memtest.bash
        DESTINATION ${padkit_completions} RENAME padkit-memtest)
install(FILES ${padkit_doc}/copyright ${padkit_doc}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(PADKIT_STATIC)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME padkit)
endif()

# Boot: a systemd unit and an init script that apply /etc/padkit.d (and the
# trial profile), and a unit that blesses the trial once the boot is healthy.
# None is enabled by the installation or the package.
install(FILES ${PROJECT_SOURCE_DIR}/boot/padkit-tune.service
              ${PROJECT_SOURCE_DIR}/boot/padkit-tune-bless.service
        DESTINATION lib/systemd/system)
# The init script goes where init looks: /etc when installed under /usr (a
# package, a board's root file system), else below the prefix. Decided at
# install time, since `cmake --install --prefix` and CPack choose the prefix then.
set(padkit_init_script ${PROJECT_SOURCE_DIR}/boot/padkit-tune.init)
install(CODE "
    set(init_dir \"\${CMAKE_INSTALL_PREFIX}/etc/init.d\")
    if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
        set(init_dir /etc/init.d)
    endif()
    file(INSTALL \"${padkit_init_script}\" DESTINATION \"\${init_dir}\" RENAME padkit-tune
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                          WORLD_READ WORLD_EXECUTE)
")

# padkit-sim is for trying padkit on a workstation, on a board only when asked.
if(TARGET padkit-sim AND PADKIT_INSTALL_SIM)
    install(TARGETS padkit-sim padkit-tune-sim padkit-memtest-sim
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${padkit_doc}/padkit-sim.1.gz ${padkit_doc}/padkit-tune-sim.1.gz
                  ${padkit_doc}/padkit-memtest-sim.1.gz
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${padkit_completion_script} DESTINATION ${padkit_completions} RENAME padkit-sim)
    install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-tune.bash
            DESTINATION ${padkit_completions} RENAME padkit-tune-sim)
    install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-memtest.bash
            DESTINATION ${padkit_completions} RENAME padkit-memtest-sim)
endif()

# Debian architecture of the binaries: the target's when cross compiling.
if(CMAKE_CROSSCOMPILING)
    string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" padkit_processor)
    if(padkit_processor MATCHES "^(aarch64|arm64)")
        set(padkit_deb_arch arm64)
    elseif(padkit_processor MATCHES "^arm")
        set(padkit_deb_arch armhf)
    elseif(padkit_processor MATCHES "^(x86_64|amd64)$")
        set(padkit_deb_arch amd64)
    elseif(padkit_processor MATCHES "^i.86$")
        set(padkit_deb_arch i386)
    else()
        message(WARNING "No Debian architecture known for processor "
                        "'${CMAKE_SYSTEM_PROCESSOR}'; set CPACK_DEBIAN_PACKAGE_ARCHITECTURE.")
    endif()
    if(padkit_deb_arch AND NOT CPACK_DEBIAN_PACKAGE_ARCHITECTURE)
        set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${padkit_deb_arch})
    endif()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME padkit)
set(CPACK_PACKAGE_VENDOR "padkit developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "read and change the hardware tuning of a running tarnm board")
set(CPACK_PACKAGE_DESCRIPTION
    "padkit reads and writes DDR PHY drive strengths, on-die termination and
DQ delays, USB EHCI PHY tuning, I2C and Ethernet MAC delays, the eMMC read
DQS delay and the CPU and core supply voltages of a tarnm board, by name,
as root, while the system runs. padkit-memtest tests memory and names the
data bits of the bus that fail. padkit-sim, when packaged, is the same
program on a simulated board.")
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
# Installed with DESTDIR under the real prefix, so the init script finds /etc;
# there it is a configuration file that dpkg keeps the administrator's edits of.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
file(WRITE ${PROJECT_BINARY_DIR}/packaging/conffiles "/etc/init.d/padkit-tune\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/conffiles)
# A static padkit needs nothing; a dynamic native one gets its library
# dependencies from dpkg-shlibdeps (package dpkg-dev) when that is there.
find_program(PADKIT_DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(PADKIT_DPKG_SHLIBDEPS)
if(NOT PADKIT_STATIC AND NOT CMAKE_CROSSCOMPILING AND PADKIT_DPKG_SHLIBDEPS)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
