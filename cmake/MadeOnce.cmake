# A file that takes long to make and is the same in every build: FOLDER/NAME, made by a command that writes it there. With
# TESSARO_CLIPS a copy stays there for other builds, under a name that stands for the command's words (MARK); it is renamed
# into place, so that builds at the same time don't disturb each other.
#
#   add_made_once(FOLDER NAME MARK DEPENDS COMMAND...)
function(add_made_once folder name mark depends)
    set(make ${ARGN})
    set(keep)
    if(TESSARO_CLIPS)
        string(MD5 words "${mark}")
        set(kept ${TESSARO_CLIPS}/${words}-${name})
        set(make test -e ${kept} && cp ${kept} ${folder}/${name} || ${make})
        set(keep COMMAND cp ${folder}/${name} ${folder}/${name}.copy COMMAND mv ${folder}/${name}.copy ${kept})
    endif()
    add_custom_command(
        OUTPUT ${folder}/${name}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder} ${TESSARO_CLIPS}
        COMMAND ${make}
        ${keep}
        DEPENDS ${depends}
        COMMENT "Making ${name}"
        VERBATIM)
endfunction()
