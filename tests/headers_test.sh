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
modern=(adapter/{CallbackRecord,ClientService,Globals,HandleRegistry}.h protocol/CProtocolSet.h)
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
echo "tried: headers, $count compilations, $failures failed"
[ $failures -eq 0 ]
