# Installation and Debian packages.
#
#   cmake --install <build> [--prefix <dir>]   padkit to sbin (a root tool),
#       padkit-sim to bin, man pages, bash completion for both names
#   cpack --config <build>/CPackConfig.cmake   padkit_<version>_<arch>.deb
#
# A native build packages padkit and padkit-sim for the build machine's
# architecture; a cross build packages padkit alone, for the target's
# architecture (armhf, arm64), usually built with -DPADKIT_STATIC=ON.

include(GNUInstallDirs)

set(padkit_completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

install(TARGETS padkit padkit-tune RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/doc/padkit-tune.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-tune.bash
        DESTINATION ${padkit_completions} RENAME padkit-tune)

# Boot: a systemd unit and an init script that apply /etc/padkit.d. Neither
# is enabled by the installation or the package.
install(FILES ${PROJECT_SOURCE_DIR}/boot/padkit-tune.service DESTINATION lib/systemd/system)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/boot/padkit-tune.init
        DESTINATION ${CMAKE_INSTALL_SYSCONFDIR}/init.d RENAME padkit-tune)
install(FILES ${PROJECT_SOURCE_DIR}/doc/padkit.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit.bash
        DESTINATION ${padkit_completions} RENAME padkit)

# padkit-sim is for trying padkit on a workstation, not for the board.
if(TARGET padkit-sim AND NOT CMAKE_CROSSCOMPILING)
    install(TARGETS padkit-sim padkit-tune-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/doc/padkit-sim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit.bash
            DESTINATION ${padkit_completions} RENAME padkit-sim)
    install(FILES ${PROJECT_SOURCE_DIR}/completion/padkit-tune.bash
            DESTINATION ${padkit_completions} RENAME padkit-tune-sim)
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
set(CPACK_PACKAGE_CONTACT "padkit developers <padkit@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "read and change the hardware tuning of a running tarnm board")
set(CPACK_PACKAGE_DESCRIPTION
    "padkit reads and writes DDR PHY drive strengths, on-die termination and
DQ delays, USB EHCI PHY tuning, I2C and Ethernet MAC delays, the eMMC read
DQS delay and the CPU and core supply voltages of a tarnm board, by name,
as root, while the system runs. padkit-sim, when packaged, is the same
program on a simulated board.")
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
# A static padkit needs nothing; a dynamic native one gets its library
# dependencies from dpkg-shlibdeps (package dpkg-dev) when that is there.
find_program(PADKIT_DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(PADKIT_DPKG_SHLIBDEPS)
if(NOT PADKIT_STATIC AND NOT CMAKE_CROSSCOMPILING AND PADKIT_DPKG_SHLIBDEPS)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
