# The plug-in's client side: what it reads and writes, and devices that answer in every way but the right one.
add_executable(onvif_words_test ${CMAKE_CURRENT_LIST_DIR}/words_test.cpp)
target_link_libraries(onvif_words_test PRIVATE tessaro_onvif)
use_googletest(onvif_words_test)
add_test(NAME onvif_words_test COMMAND onvif_words_test)
add_executable(onvif_parts_test ${CMAKE_CURRENT_LIST_DIR}/parts_test.cpp ${PROJECT_SOURCE_DIR}/plugins/onvif/Edit.cpp
                                ${PROJECT_SOURCE_DIR}/plugins/onvif/MotionCells.cpp
                                ${PROJECT_SOURCE_DIR}/plugins/onvif/Numbers.cpp
                                ${PROJECT_SOURCE_DIR}/plugins/onvif/SyncClock.cpp)
target_link_libraries(onvif_parts_test PRIVATE tessaro_onvif)
use_googletest(onvif_parts_test)
add_test(NAME onvif_parts_test COMMAND onvif_parts_test)
add_executable(onvif_calls ${CMAKE_CURRENT_LIST_DIR}/calls.cpp)
target_link_libraries(onvif_calls PRIVATE clientadapter)
add_dependencies(onvif_calls onvifclient)
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
set(suites)
if(CMAKE_CROSSCOMPILING)
    set(suites Transport) # the emulator can't join a multicast group
endif()
add_test(NAME onvif_transport_test COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_LIST_DIR}/transport_test.py ${suites})
set_tests_properties(onvif_transport_test PROPERTIES TIMEOUT 400 COST 60 ENVIRONMENT
    "CALLS=${emulator} $<TARGET_FILE:onvif_calls>;LD_LIBRARY_PATH=${CMAKE_BINARY_DIR}/plugins")
add_executable(onvif_events_test ${CMAKE_CURRENT_LIST_DIR}/events_test.cpp ${PROJECT_SOURCE_DIR}/plugins/onvif/Topics.cpp)
target_link_libraries(onvif_events_test PRIVATE tessaro_onvif)
use_googletest(onvif_events_test)
add_test(NAME onvif_events_test COMMAND onvif_events_test)
