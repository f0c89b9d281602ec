SUMMARY = "Read and change the hardware tuning of a running tarnm board"
DESCRIPTION = "padkit reads and writes DDR PHY drive strengths, on-die termination and DQ \
delays, USB PHY tuning, I2C and Ethernet MAC delays, the eMMC read DQS delay and the supply \
voltages of a tarnm board, by name. padkit-tune keeps profiles, applies them at boot and runs \
sweeps; padkit-memtest names the data bits that fail; padkit-sim and its companions are the \
same programs on a simulated board."
HOMEPAGE = "https://example.org/padkit"
SECTION = "admin"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=091303f493e3daec2f9cd2559f11b1d6"

# The source is the tree this layer lives in, as it is: the recipe builds what
# is checked out beside it. To build a release instead, a .bbappend sets
# EXTERNALSRC = "" and SRC_URI and SRCREV to the release's repository.
PADKIT_TREE := "${@os.path.normpath(d.getVar('THISDIR') + '/../../..')}"
EXTERNALSRC ?= "${PADKIT_TREE}"
EXTERNALSRC_BUILD ?= "${WORKDIR}/build"

def padkit_version(d):
    import re
    path = os.path.join(d.getVar('PADKIT_TREE'), 'CMakeLists.txt')
    bb.parse.mark_dependency(d, path)
    with open(path) as cmakelists:
        return re.search(r'^project\(padkit VERSION ([0-9.]+)', cmakelists.read(), re.M).group(1)

PV = "${@padkit_version(d)}"

inherit externalsrc cmake systemd update-rc.d ptest

# The tests only for the ptest package: GoogleTest comes from meta-oe. The test programs cannot run on the build
# machine, so their cases are listed when ctest runs, not after linking.
DEPENDS += "${@bb.utils.contains('PTEST_ENABLED', '1', 'googletest', '', d)}"
EXTRA_OECMAKE = "-DPADKIT_BUILD_TESTS=${@bb.utils.contains('PTEST_ENABLED', '1', 'ON', 'OFF', d)} \
                 -DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST -DPADKIT_INSTALL_SIM=ON"

# CMake puts the units below the prefix; systemd looks for them in its own directory.
do_install:append() {
    if [ "${prefix}/lib/systemd/system" != "${systemd_system_unitdir}" ]; then
        install -d ${D}${systemd_system_unitdir}
        mv ${D}${prefix}/lib/systemd/system/* ${D}${systemd_system_unitdir}/
        rm -r ${D}${prefix}/lib/systemd
    fi
    install -d ${D}${sysconfdir}/padkit.d ${D}${localstatedir}/lib/padkit
}

do_install_ptest() {
    DESTDIR='${D}' cmake --install '${B}' --component e2e-tests
}

PACKAGES =+ "${PN}-tune ${PN}-memtest ${PN}-sim"
FILES:${PN}-tune = "${sbindir}/padkit-tune ${datadir}/bash-completion/completions/padkit-tune \
                    ${systemd_system_unitdir} ${INIT_D_DIR} ${localstatedir}/lib/padkit"
FILES:${PN}-memtest = "${sbindir}/padkit-memtest ${datadir}/bash-completion/completions/padkit-memtest"
FILES:${PN}-sim = "${bindir}/padkit-*sim ${datadir}/bash-completion/completions/padkit-*sim"
FILES:${PN} += "${datadir}/bash-completion/completions/padkit"

SYSTEMD_PACKAGES = "${PN}-tune"
SYSTEMD_SERVICE:${PN}-tune = "padkit-tune.service padkit-tune-bless.service"
INITSCRIPT_PACKAGES = "${PN}-tune"
INITSCRIPT_NAME:${PN}-tune = "padkit-tune"
INITSCRIPT_PARAMS:${PN}-tune = "start 05 S ."

# The end-to-end tests run padkit-sim, padkit-tune-sim and both padkit-memtests, and coreutils' env and timeout;
# those that need python3, strace or unshare skip where they are missing.
RDEPENDS:${PN}-ptest += "${PN}-sim ${PN}-memtest coreutils"
RRECOMMENDS:${PN}-ptest += "python3-core python3-xml strace util-linux-unshare"
