# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files of this folder. BUILD names the build tree, SOURCE the sources, CXX the
# compiler, CMAKE the cmake to install with.

load ../cli/helpers

: "${BUILD:?must name the build tree}" "${SOURCE:?must name the sources}" "${CXX:?}" "${CMAKE:?}"

# install_to PREFIX OPTION...
install_to() {
    "$CMAKE" --install "$BUILD" --prefix "$@" >/dev/null
}

# The headers of an installation, as they are included.
headers_below() {
    (cd "$1" && find . -name '*.h' | sed 's,^\./,,' | sort)
}

# Compiles the standard input with the headers of an installation alone: compiles COMPILER FOLDER.
compiles() {
    "$1" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror -I"$2" -x c++ -
}

# Both compilers, where they are there.
compilers() {
    printf '%s\n' "$CXX"
    case $CXX in
    *clang*) command -v g++ || true ;;
    *) command -v clang++ || true ;;
    esac
}
