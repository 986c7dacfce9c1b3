# What the library exports: every function that ClientAdapter.h declares, the named objects, members of the documented
# classes, and nothing else.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND nm -D --defined-only -C ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[0-9a-f]+ [A-Za-z] [^\n]+" rows "${text}")
list(TRANSFORM rows REPLACE "^[0-9a-f]+ [A-Za-z] " "")
set(exported ${rows})
list(FILTER exported INCLUDE REGEX "^ClientAdapter_")

file(READ ${ROOT}/adapter/ClientAdapter.h header)
string(REGEX MATCHALL "TESSARO_API int ClientAdapter_[A-Za-z0-9_]+" declared "${header}")
list(TRANSFORM declared REPLACE "TESSARO_API int " "")

list(SORT exported)
list(SORT declared)
if(NOT "${exported}" STREQUAL "${declared}")
    message(SEND_ERROR "exported: ${exported}\ndeclared: ${declared}")
endif()

set(classes "Adapter_ProtocolSet::CClientProtocol(Set|Base)|Adapter_ApplicationLayer::(Client|CSetCallBack)")
string(APPEND classes "|Adapter_System::CModule|Adapter_CommonKit::TSingletons<CAdapter_GlobalObject>")
string(APPEND classes "|CAdapter_GlobalObject|CAdapta_ClientService|CAdapta_PlatformResource")
set(objects "g_cProtocolSet|g_SetCallBack|g_SetUserCallBack|g_cClient|g_cVersion")
foreach(row ${rows})
    if(NOT row MATCHES "^(ClientAdapter_|(${objects})$|((vtable|typeinfo|typeinfo name|guard variable) for )?(${classes})($|::))")
        message(SEND_ERROR "not ours to export: ${row}")
    endif()
endforeach()
foreach(object g_cProtocolSet g_SetCallBack g_SetUserCallBack g_cClient g_cVersion)
    if(NOT object IN_LIST rows)
        message(SEND_ERROR "missing: ${object}")
    endif()
endforeach()
