#!/usr/bin/env bash
# Each public header compiles alone, with both compilers, in the lowest standard of every language that it claims; without
# an include folder, since an installed one has another.
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
        "$3" -x "$1" -std="$2" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -include "$PWD/$header" /dev/null ||
            { echo "$header: $3 $2" && failures=$((failures + 1)); }
    done
}

applications=(adapter/ClientAdapter{,Extra}.h protocol/PluginInterface.h protocol/interface/*.h)
classes=(protocol/{CClientProtocolBase,IProtocol}.h system/{Buffer,File,Module,Mutex,Signal,Utility}.h)
modern=(adapter/{CallbackRecord,ClientService,Globals,HandleRegistry}.h protocol/{CProtocolSet,Record}.h)
for compiler in gcc clang; do
    compile c c99 $compiler "${applications[@]}"
    compile c++ c++17 $compiler "${applications[@]}" "${classes[@]}"
    compile c++ c++20 $compiler "${modern[@]}"
done
# No record but two older ones has padding that isn't written down, also where 64-bit words may stand at odd places.
for word in -m64 -m32; do
    count=$((count + 1))
    gcc -x c -std=c99 $word -ffreestanding -fsyntax-only -Wpadded -include protocol/PluginInterface.h /dev/null 2>&1 |
        grep -v -e interface/Frames.h -e '^ ' -e '^In file' -e '^ *from' && failures=$((failures + 1))
done
echo "tried: headers, $count compilations, $failures failed"
[ $failures -eq 0 ]
