################################################################################
#
# padkit
#
################################################################################

# Built from the tree this external tree lives in; its version is the one
# that CMakeLists.txt gives.
PADKIT_SITE = $(realpath $(BR2_EXTERNAL_PADKIT_PATH)/..)
PADKIT_SITE_METHOD = local
# Build directories of the tree are not part of the source.
PADKIT_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude /build*
PADKIT_VERSION = $(shell sed -n 's/^project.padkit VERSION \([0-9.]*\).*/\1/p' $(PADKIT_SITE)/CMakeLists.txt)
PADKIT_LICENSE = MIT
PADKIT_LICENSE_FILES = LICENSE
PADKIT_CONF_OPTS = -DPADKIT_BUILD_TESTS=OFF

ifeq ($(BR2_PACKAGE_PADKIT_SIM),y)
PADKIT_CONF_OPTS += -DPADKIT_BUILD_SIM=ON -DPADKIT_INSTALL_SIM=ON
else
PADKIT_CONF_OPTS += -DPADKIT_BUILD_SIM=OFF
endif

ifeq ($(BR2_STATIC_LIBS),y)
PADKIT_CONF_OPTS += -DPADKIT_STATIC=ON
endif

# The installation holds every program, and the boot units where a
# distribution enables them by hand: keep the programs chosen, and the
# boot units of the chosen init system (below).
define PADKIT_KEEP_CHOSEN
	rm -f $(TARGET_DIR)/etc/init.d/padkit-tune \
		$(TARGET_DIR)/usr/lib/systemd/system/padkit-tune*.service
	rm -rf $(TARGET_DIR)/usr/share/lintian
	$(if $(BR2_PACKAGE_PADKIT_TUNE),,\
		rm -f $(TARGET_DIR)/usr/sbin/padkit-tune \
			$(TARGET_DIR)/usr/share/bash-completion/completions/padkit-tune)
	$(if $(BR2_PACKAGE_PADKIT_MEMTEST),,\
		rm -f $(TARGET_DIR)/usr/sbin/padkit-memtest \
			$(TARGET_DIR)/usr/share/bash-completion/completions/padkit-memtest)
	mkdir -p $(TARGET_DIR)/etc/padkit.d $(TARGET_DIR)/var/lib/padkit
endef
PADKIT_POST_INSTALL_TARGET_HOOKS += PADKIT_KEEP_CHOSEN

ifeq ($(BR2_PACKAGE_PADKIT_TUNE),y)
define PADKIT_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/boot/padkit-tune.service \
		$(TARGET_DIR)/usr/lib/systemd/system/padkit-tune.service
	$(INSTALL) -D -m 0644 $(@D)/boot/padkit-tune-bless.service \
		$(TARGET_DIR)/usr/lib/systemd/system/padkit-tune-bless.service
endef

define PADKIT_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(@D)/boot/padkit-tune.init \
		$(TARGET_DIR)/etc/init.d/S05padkit-tune
endef
endif

$(eval $(cmake-package))
