SUMMARY = "Image that shows MoskTest on the board's screen"
LICENSE = "MIT"

CORE_IMAGE_EXTRA_INSTALL += "mosktest"
inherit core-image

# The screen's terminal is the program's; with systemd its unit takes it from getty.
take_console() {
    if [ -e ${IMAGE_ROOTFS}${sysconfdir}/inittab ]; then
        sed -i '/getty.* tty1$/d' ${IMAGE_ROOTFS}${sysconfdir}/inittab
    fi
}
ROOTFS_POSTPROCESS_COMMAND += "take_console;"
