# The warnings every target is built with.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A slip in a table row is one short message instead of a page of macro back-trace.
    add_compile_options(-ftrack-macro-expansion=0)
    # Texts that are too long for their record are cut on purpose.
    add_compile_options(-Wno-format-truncation)
    # GCC 12 sees an overlap in every sum of a literal and a string that it inlines.
    add_compile_options(-Wno-restrict)
    # Nothing of ours was built for ARM with a compiler that old.
    add_compile_options(-Wno-psabi)
endif()
if(TESSARO_WERROR)
    add_compile_options(-Werror)
endif()
