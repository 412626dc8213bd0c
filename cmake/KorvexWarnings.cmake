# One set of warnings for every target of the project (library, program,
# tests, benchmarks, generators): link korvex_warnings. KORVEX_WERROR makes
# them errors; a packager on a newer compiler may switch it off.
option(KORVEX_WERROR "Treat warnings as errors" ON)
add_library(korvex_warnings INTERFACE)
target_compile_options(korvex_warnings INTERFACE -Wall -Wextra -Wshadow
  $<$<BOOL:${KORVEX_WERROR}>:-Werror>)
