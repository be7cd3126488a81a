SUMMARY = "Bench and factory test tool for an embedded Linux HMI board"
SECTION = "devel"
LICENSE = "CLOSED"

# The tree that this layer lies in.
inherit externalsrc
EXTERNALSRC = "${@os.path.realpath(d.getVar('FILE_DIRNAME') + '/../../../..')}"

inherit cmake_qt5 systemd update-rc.d

DEPENDS = "qtbase qtdeclarative qtmultimedia qtserialport"
EXTRA_OECMAKE = " \
    -DBUILD_TESTING=OFF -DMOSK_SIMULATED_BOARD=OFF -DMOSK_GUIDE=OFF \
    -DCMAKE_INSTALL_SYSCONFDIR=${sysconfdir} \
    -DMOSK_SYSTEMD_DIR=${systemd_system_unitdir} -DMOSK_UDEV_DIR=${nonarch_base_libdir}/udev/rules.d \
"

SYSTEMD_SERVICE:${PN} = "mosktest.service"
INITSCRIPT_NAME = "mosktest"
INITSCRIPT_PARAMS = "defaults 80 20"

FILES:${PN} += "${prefix}/lib/mosktest ${systemd_system_unitdir} ${nonarch_base_libdir}/udev"
CONFFILES:${PN} = "${sysconfdir}/default/mosktest"

RDEPENDS:${PN} = " \
    qtbase-plugins qtdeclarative-qmlplugins qtmultimedia-plugins qtquickcontrols2-qmlplugins \
    qtvirtualkeyboard qtvirtualkeyboard-plugins qtvirtualkeyboard-qmlplugins ttf-wqy-zenhei \
    iproute2 iputils-ping net-tools psmisc util-linux-blockdev wpa-supplicant wpa-supplicant-cli \
"
RRECOMMENDS:${PN} = " \
    gstreamer1.0-plugins-base-meta gstreamer1.0-plugins-good-meta gstreamer1.0-plugins-bad-camerabin \
    tslib-calibrate \
    ${@bb.utils.contains('BBFILE_COLLECTIONS', 'multimedia-layer', 'tinyalsa', '', d)} \
"
