#!/usr/bin/env bash
# Each public header compiles alone, with both compilers, in the lowest standard of every language that it claims.
#
#   headers_test.sh ROOT
set -u
cd "$1"
failures=0
count=0

# compile LANGUAGE STANDARD COMPILER HEADER...
compile() {
    local header
    for header in "${@:4}"; do
        count=$((count + 1))
        "$3" -x "$1" -std="$2" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I. -include "$header" /dev/null ||
            { echo "$header: $3 $2" && failures=$((failures + 1)); }
    done
}

applications=(adapter/ClientAdapter{,Extra}.h protocol/PluginInterface.h)
classes=(protocol/{CClientProtocolBase,IProtocol}.h system/{Buffer,File,Module,Mutex,Signal,Utility}.h)
modern=(adapter/{CallbackRecord,ClientService,Globals,HandleRegistry}.h protocol/CProtocolSet.h)
for compiler in gcc clang; do
    compile c c99 $compiler "${applications[@]}"
    compile c++ c++17 $compiler "${applications[@]}" "${classes[@]}"
    compile c++ c++20 $compiler "${modern[@]}"
done
echo "tried: headers, $count compilations, $failures failed"
[ $failures -eq 0 ]
