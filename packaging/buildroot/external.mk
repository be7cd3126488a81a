include $(sort $(wildcard $(BR2_EXTERNAL_MOSKTEST_PATH)/package/*/*.mk))
