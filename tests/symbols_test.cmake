# What the library exports: the names in abi/, and every function that ClientAdapter.h declares is one of them. Inline
# members of exported classes may come on top in builds that don't inline them.
cmake_minimum_required(VERSION 3.25)

# The names of one kind, sorted, without "<address> <kind> ".
function(exported_names kinds names)
    execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[0-9a-f]+ ${kinds} [^\n]+" rows "${text}")
    list(TRANSFORM rows REPLACE "^[0-9a-f]+ [A-Za-z] " "")
    list(REMOVE_DUPLICATES rows) # a constructor has several entries
    list(SORT rows)
    set(${names} "${rows}" PARENT_SCOPE)
endfunction()

exported_names("[A-Za-z]" all)
exported_names("[A-TX-Z]" strong)
file(STRINGS ${LIST} listed)

# Names in one list and not in the other.
function(expect_none what in not_in)
    list(REMOVE_ITEM ${in} ${${not_in}})
    foreach(name ${${in}})
        message(SEND_ERROR "${what}: ${name}")
        set(differs TRUE PARENT_SCOPE)
    endforeach()
endfunction()

expect_none("no longer exported" listed all)
expect_none("newly exported" strong listed)
if(differs)
    list(JOIN all "\n" text)
    file(WRITE ${CMAKE_BINARY_DIR}/exported.txt "${text}\n")
    message("If that is wanted, ${CMAKE_BINARY_DIR}/exported.txt of a release build is the new ${LIST}")
endif()

file(READ ${ROOT}/adapter/ClientAdapter.h header)
string(REGEX MATCHALL "TESSARO_API int ClientAdapter_[A-Za-z0-9_]+" declared "${header}")
list(TRANSFORM declared REPLACE "TESSARO_API int " "")
list(FILTER listed INCLUDE REGEX "^ClientAdapter_")
expect_none("listed, not declared" listed declared)
expect_none("declared, not listed" declared listed)
