include $(sort $(wildcard $(BR2_EXTERNAL_OSTREL_KMR_PATH)/*/*.mk))
