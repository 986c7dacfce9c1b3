# The simulated device's ONVIF face, asked badly.
add_test(NAME onvif_device_test COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_LIST_DIR}/device_test.py)
set_tests_properties(onvif_device_test PROPERTIES TIMEOUT 300 ENVIRONMENT "DEVICE=$<TARGET_FILE:onvif_device>")
