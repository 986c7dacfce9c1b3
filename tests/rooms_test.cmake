# Which room may include which: adapter -> bindings -> protocol -> system, one way. The handle registry, through its
# look-ups, is the one piece of adapter/ that bindings/ uses, and plug-ins see the protocol's headers and nothing above
# them; the RTSP engine and ONVIF's client, on which they stand, see the records among those.
cmake_minimum_required(VERSION 3.25)

function(check_room room may)
    file(GLOB_RECURSE sources ${ROOT}/${room}/*)
    foreach(source ${sources})
        file(STRINGS ${source} includes REGEX "^#include \"")
        list(FILTER includes EXCLUDE REGEX "^#include \"(${may})")
        foreach(include ${includes})
            message(SEND_ERROR "${source}: ${include} looks up the stairs")
        endforeach()
    endforeach()
endfunction()

check_room(system "system/")
check_room(protocol "(system|protocol)/")
check_room(bindings "(system|protocol|bindings)/|adapter/LookUp.h\"")
check_room(adapter "(system|protocol|bindings|adapter)/")
check_room(rtsp "rtsp/|protocol/(PluginInterface\\.h|interface/)|system/Export\\.h\"")
check_room(onvif "(onvif|rtsp)/|protocol/(PluginInterface\\.h|interface/)")
check_room(plugins "(protocol|rtsp|onvif|plugins)/|system/(Call|Export)\\.h\"")
check_room(tools/tessaro "adapter/(ClientAdapter(Extra)?|Globals)\\.h\"|protocol/|system/(Call|Export)\\.h\"|tools/tessaro/|RecordTables")
check_room(examples "adapter/(ClientAdapter(Extra)?|Globals)\\.h\"|(../tours/)?Tour\\.h\"|(plugins/common|protocol)/|system/Call\\.h\"")

foreach(header HandleRegistry LookUp)
    file(STRINGS ${ROOT}/adapter/${header}.h includes REGEX "^#include \"(bindings|adapter)/")
    list(FILTER includes EXCLUDE REGEX "adapter/HandleRegistry.h\"")
    if(includes)
        message(SEND_ERROR "${header}.h includes ${includes}, and bindings/ would with it")
    endif()
endforeach()
