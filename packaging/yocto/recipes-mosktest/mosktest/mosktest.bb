SUMMARY = "Bench and factory test tool for an embedded Linux HMI board"
SECTION = "devel"
LICENSE = "CLOSED"

# The tree that this layer lies in.
inherit externalsrc
EXTERNALSRC = "${@os.path.realpath(d.getVar('FILE_DIRNAME') + '/../../../..')}"

inherit cmake_qt5 systemd

DEPENDS = "qtbase qtdeclarative qtmultimedia qtserialport"
EXTRA_OECMAKE = " \
    -DBUILD_TESTING=OFF -DMOSK_SIMULATED_BOARD=OFF \
    -DCMAKE_INSTALL_SYSCONFDIR=${sysconfdir} \
    -DMOSK_SYSTEMD_DIR=${systemd_system_unitdir} -DMOSK_UDEV_DIR=${nonarch_base_libdir}/udev/rules.d \
"

SYSTEMD_SERVICE:${PN} = "mosktest.service"

FILES:${PN} += "${prefix}/lib/mosktest ${systemd_system_unitdir} ${nonarch_base_libdir}/udev"
CONFFILES:${PN} = "${sysconfdir}/default/mosktest"

RDEPENDS:${PN} = " \
    qtbase-plugins qtdeclarative-qmlplugins qtmultimedia-plugins qtquickcontrols2-qmlplugins \
    qtvirtualkeyboard qtvirtualkeyboard-plugins qtvirtualkeyboard-qmlplugins \
    iproute2 iputils-ping net-tools psmisc wpa-supplicant wpa-supplicant-cli \
"
RRECOMMENDS:${PN} = "tslib-calibrate tinyalsa-tools ttf-wqy-zenhei gstreamer1.0-plugins-good"
