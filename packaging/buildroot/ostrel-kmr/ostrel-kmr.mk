################################################################################
#
# ostrel-kmr
#
################################################################################

OSTREL_KMR_VERSION = 1.0.0
# The folder of this repository; a file under dl/ with its hash also works.
OSTREL_KMR_SITE ?= $(BR2_EXTERNAL_OSTREL_KMR_PATH)/../..
OSTREL_KMR_SITE_METHOD = local
OSTREL_KMR_LICENSE = PROPRIETARY
OSTREL_KMR_INSTALL_STAGING = YES
OSTREL_KMR_DEPENDENCIES = qt5base
OSTREL_KMR_CONF_OPTS = \
	-DKMR_DRIVER_ONLY=ON \
	-DKMR_QT_MAJOR=5 \
	-DKMR_TESTS=OFF

$(eval $(cmake-package))
