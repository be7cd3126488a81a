################################################################################
#
# mosktest
#
################################################################################

# The tree that this folder lies in.
MOSKTEST_SITE = $(BR2_EXTERNAL_MOSKTEST_PATH)/../..
MOSKTEST_SITE_METHOD = local
MOSKTEST_DEPENDENCIES = \
	qt5base qt5declarative qt5multimedia qt5quickcontrols2 qt5serialport qt5virtualkeyboard
MOSKTEST_CONF_OPTS = \
	-DBUILD_TESTING=OFF -DMOSK_SIMULATED_BOARD=OFF -DMOSK_GUIDE=OFF \
	-DCMAKE_INSTALL_SYSCONFDIR=/etc -DMOSK_UDEV_DIR=/lib/udev/rules.d
MOSKTEST_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude /build --exclude /out

# CMake has put it where Debian wants it; BusyBox's init starts what begins with S.
define MOSKTEST_INSTALL_INIT_SYSV
	mv $(TARGET_DIR)/etc/init.d/mosktest $(TARGET_DIR)/etc/init.d/S80mosktest
endef

# The unit is installed by CMake too, and enabled by systemd's presets.
define MOSKTEST_REMOVE_INIT_SCRIPT
	rm -f $(TARGET_DIR)/etc/init.d/mosktest
endef
MOSKTEST_POST_INSTALL_TARGET_HOOKS += $(if $(BR2_INIT_SYSTEMD),MOSKTEST_REMOVE_INIT_SCRIPT)

$(eval $(cmake-package))
