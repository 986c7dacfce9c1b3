# What an application needs to be built: the headers, and how CMake and pkg-config find them and the library.
include(CMakePackageConfigHelpers)

install(TARGETS clientadapter EXPORT tessaro LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# One include folder, <tessaro/ClientAdapter.h>. Behind it stand the rooms, as in the source tree, without what only the
# library's own sources include.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/tessaro)
install(DIRECTORY include/tessaro/ DESTINATION ${headers})
install(FILES adapter/CallbackRecord.h adapter/ClientAdapter.h adapter/ClientAdapterExtra.h adapter/ClientService.h
              adapter/Globals.h adapter/HandleRegistry.h DESTINATION ${headers}/adapter)
install(FILES protocol/CClientProtocolBase.h protocol/CProtocolSet.h protocol/IProtocol.h protocol/PluginInterface.h
              protocol/Record.h protocol/operations.def DESTINATION ${headers}/protocol)
install(DIRECTORY protocol/interface DESTINATION ${headers}/protocol)
install(FILES system/Buffer.h system/Call.h system/Export.h system/File.h system/Module.h system/Mutex.h system/Signal.h
              system/Utility.h DESTINATION ${headers}/system)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/tessaro)
configure_package_config_file(cmake/tessaroConfig.cmake.in tessaroConfig.cmake INSTALL_DESTINATION ${package}
                              PATH_VARS TESSARO_PLUGIN_DIR NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(tessaroConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tessaroConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tessaroConfigVersion.cmake
        DESTINATION ${package})
install(EXPORT tessaro NAMESPACE tessaro:: FILE tessaroTargets.cmake DESTINATION ${package})

# The prefix is known when it is installed: cmake --install may name another.
foreach(name PROJECT_VERSION CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR TESSARO_PLUGIN_DIR)
    install(CODE "set(${name} \"${${name}}\")")
endforeach()
set(description ${CMAKE_CURRENT_BINARY_DIR}/tessaro.pc)
install(CODE "configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/cmake/tessaro.pc.in\" \"${description}\" @ONLY)")
install(FILES ${description} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
