# What cmake --install makes of this build.
find_program(PKG_CONFIG_PROGRAM pkg-config REQUIRED)
add_test(NAME install_test COMMAND Python3::Interpreter -B ${CMAKE_CURRENT_LIST_DIR}/install_test.py
                                   ${PROJECT_SOURCE_DIR}/examples)
set_tests_properties(install_test PROPERTIES TIMEOUT 600)
set_property(TEST install_test PROPERTY ENVIRONMENT BUILD=${CMAKE_BINARY_DIR} CC=${CMAKE_C_COMPILER} CXX=${CMAKE_CXX_COMPILER}
    PKG_CONFIG=${PKG_CONFIG_PROGRAM} SERVER=$<TARGET_FILE:rtsp_server> CLIP=${CMAKE_CURRENT_BINARY_DIR}/rtsp/clips/h264.mp4
    ONVIF_DEVICE=$<TARGET_FILE:onvif_device>)
