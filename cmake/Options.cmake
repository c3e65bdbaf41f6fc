# SPDX-License-Identifier: Apache-2.0
# qm_options carries the language level, the warning set, the hardening and the sanitizers.
# Every target of ours links it; nothing is set globally.
add_library(qm_options INTERFACE)
target_compile_features(qm_options INTERFACE cxx_std_20)
target_include_directories(qm_options INTERFACE "${PROJECT_SOURCE_DIR}")

target_compile_options(qm_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wformat=2 -Wundef
  -Wimplicit-fallthrough -Wextra-semi -Wunused
  $<$<BOOL:${QM_WARNINGS_AS_ERRORS}>:-Werror>)

# Sections let the linker drop what the small executable does not use.
target_compile_options(qm_options INTERFACE
  -fPIC -ffunction-sections -fdata-sections -fstack-protector-strong -fstack-clash-protection
  -fcf-protection)
target_compile_definitions(qm_options INTERFACE _FILE_OFFSET_BITS=64 _GLIBCXX_ASSERTIONS)
if(NOT QM_SANITIZE)
  target_compile_definitions(qm_options INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
target_link_options(qm_options INTERFACE
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>
  -Wl,--gc-sections -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

if(QM_SANITIZE)
  target_compile_options(qm_options INTERFACE
    -fsanitize=${QM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qm_options INTERFACE -fsanitize=${QM_SANITIZE})
endif()

# Compiles the headers that nearly every file includes once for each target. Files that do not
# include what they use go unnoticed then, so some build has to do without. The environment chooses
# it for builds that others configure.
option(QM_PRECOMPILE_HEADERS "Compile common headers once" "$ENV{QM_PRECOMPILE_HEADERS}")
set(qm_common_headers
  <algorithm> <array> <chrono> <cstddef> <cstdint> <filesystem> <functional> <memory> <mutex>
  <optional> <span> <string> <string_view> <thread> <utility> <variant> <vector>)
function(qm_precompile_headers target)
  if(QM_PRECOMPILE_HEADERS)
    target_precompile_headers(${target} PRIVATE ${qm_common_headers})
  endif()
endfunction()
