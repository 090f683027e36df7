# An example, not built by this project: see README.md beside it.
SUMMARY = "Operator panel facilities behind a local socket"
DESCRIPTION = "Answers short text requests over a Unix-domain socket by asking the panel's D-Bus service."
SECTION = "misc"

# This software has no stated licence: agree on one with the authors, and set it here together with
# LIC_FILES_CHKSUM.
LICENSE = "CLOSED"

# The path of your copy of the repository, and the commit to build.
OVIK_SERVER_GIT ?= "git:///path/to/ovik_server.git;protocol=file;branch=main"
SRC_URI = "${OVIK_SERVER_GIT}"
SRCREV ?= "${AUTOREV}"
S = "${WORKDIR}/git"

# qtbase-native has the generators that run during the build.
DEPENDS = "qtbase qtbase-native cli11 libedit nlohmann-json"

inherit cmake_qt5 systemd

EXTRA_OECMAKE += "-DCMAKE_BUILD_TYPE=MinSizeRel -DOVIK_BUILD_TESTS=OFF -DOVIK_BUILD_PANEL_SIM=OFF"

# The unit is installed below the prefix; systemd.bbclass expects it in the distribution's unit folder.
do_install:append() {
    if [ "${prefix}/lib/systemd/system" != "${systemd_system_unitdir}" ]; then
        install -d ${D}${systemd_system_unitdir}
        mv ${D}${prefix}/lib/systemd/system/ovik_server.service ${D}${systemd_system_unitdir}/
        rmdir -p --ignore-fail-on-non-empty ${D}${prefix}/lib/systemd/system
    fi
}

SYSTEMD_SERVICE:${PN} = "ovik_server.service"

FILES:${PN} += "${nonarch_libdir}/tmpfiles.d"

PACKAGES =+ "${PN}-tools ${PN}-interfaces ${PN}-client"
FILES:${PN}-tools = "${bindir} ${datadir}/bash-completion ${datadir}/zsh"
FILES:${PN}-interfaces = "${datadir}/dbus-1/interfaces"
FILES:${PN}-client = "${libdir}/libovik_client.so.*"
RRECOMMENDS:${PN} = "dbus"
