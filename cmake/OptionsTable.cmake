# SPDX-License-Identifier: Apache-2.0
# The table of commands and options, and how files are made of it.
find_program(QM_AWK awk REQUIRED)
set(qm_options_table "${PROJECT_SOURCE_DIR}/completions/options.tsv")
set(qm_options_reader "${PROJECT_SOURCE_DIR}/completions/table.awk")

# qm_fill_from_options(OUTPUT SCRIPT TEMPLATE [NAME=VALUE...]): OUTPUT is TEMPLATE, with the marks
# in it replaced by what SCRIPT makes of the table.
function(qm_fill_from_options output script template)
  set(values "")
  foreach(value IN LISTS ARGN)
    list(APPEND values -v "${value}")
  endforeach()
  add_custom_command(OUTPUT "${output}"
    COMMAND "${QM_AWK}" -f "${qm_options_reader}" -f "${script}" -v "template=${template}" ${values}
      "${qm_options_table}" > "${output}"
    DEPENDS "${qm_options_table}" "${qm_options_reader}" "${script}" "${template}" VERBATIM)
endfunction()
