include $(sort $(wildcard $(BR2_EXTERNAL_PADKIT_PATH)/package/*/*.mk))
