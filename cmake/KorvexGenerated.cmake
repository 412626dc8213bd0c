# Sources produced at build time by small generators built from the library's
# own headers.

# p_table: the doubling table of the CryptoPro-A base point, computed by the
# same builder as GOST_34_10_2001_2P_table.
add_executable(korvex_p_table_gen
  ${CMAKE_SOURCE_DIR}/ec/gen/p_table_gen.cpp
  ${CMAKE_SOURCE_DIR}/ec/curves_2001.cpp)
target_include_directories(korvex_p_table_gen PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
target_compile_options(korvex_p_table_gen PRIVATE -O2)
set(KORVEX_P_TABLE_SRC ${CMAKE_BINARY_DIR}/generated/p_table.cpp)
add_custom_command(
  OUTPUT ${KORVEX_P_TABLE_SRC}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND korvex_p_table_gen ${KORVEX_P_TABLE_SRC}
  DEPENDS korvex_p_table_gen
  COMMENT "Generating p_table")
list(APPEND KORVEX_SOURCES ${KORVEX_P_TABLE_SRC})

# comb: the fixed-base tables of the built-in curves (ec/comb.h), computed with
# the engine's own header-only arithmetic.
add_executable(korvex_comb_gen ${CMAKE_SOURCE_DIR}/ec/gen/comb_gen.cpp)
target_include_directories(korvex_comb_gen PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
target_compile_options(korvex_comb_gen PRIVATE -O2)
set(KORVEX_COMB_SRC ${CMAKE_BINARY_DIR}/generated/ec_comb.cpp)
add_custom_command(
  OUTPUT ${KORVEX_COMB_SRC}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND korvex_comb_gen ${KORVEX_COMB_SRC}
  DEPENDS korvex_comb_gen
  COMMENT "Generating ec_comb")
list(APPEND KORVEX_SOURCES ${KORVEX_COMB_SRC})

# The instrumented test build (tests/, created later) compiles the same source
# list; make it wait for the generated file too.
add_custom_target(korvex_generated DEPENDS ${KORVEX_P_TABLE_SRC} ${KORVEX_COMB_SRC})
function(korvex_generated_deps)
  if(TARGET korvex_asan)
    add_dependencies(korvex_asan korvex_generated)
  endif()
endfunction()
cmake_language(DEFER CALL korvex_generated_deps)
