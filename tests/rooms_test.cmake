# Which room may include which: adapter -> bindings -> protocol -> system, one way. The handle registry is the one piece
# of adapter/ that bindings/ uses, and plug-ins see the protocol's headers and nothing above them.
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
check_room(bindings "(system|protocol|bindings)/|adapter/HandleRegistry.h\"")
check_room(adapter "(system|protocol|bindings|adapter)/")
check_room(plugins "(protocol|plugins)/|system/(Call|Export)\\.h\"")
check_room(examples "adapter/(ClientAdapter|Globals)\\.h\"|Tour\\.h\"")

file(STRINGS ${ROOT}/adapter/HandleRegistry.h includes REGEX "^#include \"(bindings|adapter)/")
if(includes)
    message(SEND_ERROR "HandleRegistry.h includes ${includes}, and bindings/ would with it")
endif()
