# What makes frames, files and pictures of a device.
include(${CMAKE_CURRENT_LIST_DIR}/clips.cmake)
pkg_check_modules(DEVICE_IMAGES REQUIRED IMPORTED_TARGET freetype2 libturbojpeg libpng)

file(GLOB media CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
add_library(device_media OBJECT ${media} ../common/FileWriter.cpp ../common/FragmentedMp4.cpp
                                 ../common/TransportStream.cpp)
target_include_directories(device_media PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(device_media PUBLIC Threads::Threads PkgConfig::DEVICE_IMAGES ${CMAKE_DL_LIBS})
add_dependencies(device_media device_clips)
