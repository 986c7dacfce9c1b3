#!/usr/bin/env bash
# Each public header compiles alone, in every language that it claims, with both compilers.
#
#   headers_test.sh ROOT
set -u
cd "$1"
failures=0
count=0

# compile HEADER COMPILER LANGUAGE STANDARD...
compile() {
    local header=$1 compiler=$2 language=$3 standard
    for standard in "${@:4}"; do
        count=$((count + 1))
        "$compiler" -x "$language" -std="$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I. -include "$header" \
            /dev/null || { echo "$header: $compiler $standard" && failures=$((failures + 1)); }
    done
}

applications=(adapter/ClientAdapter.h protocol/PluginInterface.h protocol/interface/*.h)
classes=(protocol/{CClientProtocolBase,IProtocol}.h system/{Buffer,File,Module,Mutex,Signal,Utility}.h)
modern=(adapter/{CallbackRecord,ClientService,Globals,HandleRegistry}.h protocol/{CProtocolSet,Record}.h)
for header in "${applications[@]}"; do
    compile "$header" gcc c c99 c11
    compile "$header" clang c c99 c11
done
for header in "${applications[@]}" "${classes[@]}"; do
    compile "$header" g++ c++ c++17
    compile "$header" clang++ c++ c++17
done
for header in "${applications[@]}" "${classes[@]}" "${modern[@]}"; do
    compile "$header" g++ c++ c++20
    compile "$header" clang++ c++ c++20
done
# No record but two older ones has padding that isn't written down, also where 64-bit words may stand at odd places.
for word in -m64 -m32; do
    count=$((count + 1))
    gcc -x c -std=c99 $word -ffreestanding -fsyntax-only -Wpadded -I. -include protocol/PluginInterface.h /dev/null 2>&1 |
        grep -v -e interface/Frames.h -e '^ ' -e '^In file' -e '^ *from' && failures=$((failures + 1))
done
echo "tried: headers, $count compilations, $failures failed"
[ $failures -eq 0 ]
