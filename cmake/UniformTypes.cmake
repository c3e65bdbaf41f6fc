# SPDX-License-Identifier: Apache-2.0
# The table of uniform types is kept as text and compiled into constant arrays at build time.
add_executable(generate_uniform_types platform/linux/uniform_types/GenerateUniformTypes.cpp)
target_link_libraries(generate_uniform_types PRIVATE qm_options)
set_target_properties(generate_uniform_types PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/generated")

set(qm_uniform_types_source "${PROJECT_SOURCE_DIR}/platform/linux/uniform_types/uniform-types.tsv")
set(qm_uniform_types_table "${PROJECT_BINARY_DIR}/generated/UniformTypeTable.inc")
add_custom_command(
  OUTPUT "${qm_uniform_types_table}"
  COMMAND generate_uniform_types "${qm_uniform_types_source}" "${qm_uniform_types_table}"
  DEPENDS generate_uniform_types "${qm_uniform_types_source}"
  COMMENT "Generating the table of uniform types" VERBATIM)
add_custom_target(qm_uniform_types_generated DEPENDS "${qm_uniform_types_table}")

add_library(qm_uniform_types INTERFACE)
add_dependencies(qm_uniform_types qm_uniform_types_generated)
target_include_directories(qm_uniform_types INTERFACE "${PROJECT_BINARY_DIR}/generated")
# The tests compare what the compiled table answers with the text it was made from.
target_compile_definitions(qm_uniform_types INTERFACE
  QM_UNIFORM_TYPES_SOURCE="${qm_uniform_types_source}")
