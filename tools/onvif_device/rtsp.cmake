# Live streams and recordings by RTSP, with GStreamer's server.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GST_ONVIF REQUIRED IMPORTED_TARGET gstreamer-rtsp-server-1.0 gstreamer-rtsp-1.0 gstreamer-app-1.0
    gstreamer-base-1.0 gio-2.0)
add_library(onvif_device_rtsp OBJECT RtspLive.cpp RtspMount.cpp RtspReplay.cpp RtspReplaySource.cpp RtspReplayTrack.cpp
                                     RtspSide.cpp)
target_include_directories(onvif_device_rtsp PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(onvif_device_rtsp PUBLIC PkgConfig::GST_ONVIF)
# GLib's headers aren't pedantic, and its macros cast as C does.
target_compile_options(onvif_device_rtsp PRIVATE -Wno-pedantic -Wno-conversion -Wno-sign-conversion -Wno-cast-align
                                                 -Wno-shadow)
