# Sources produced at build time by small generators built from the library's
# own headers.

# korvex_generate(NAME GEN_SOURCES...): builds a generator from the given
# sources and the library's headers, runs it into generated/NAME.cpp and adds
# that file to the library.
function(korvex_generate name)
  add_executable(korvex_${name}_gen ${ARGN})
  target_include_directories(korvex_${name}_gen PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
  target_compile_options(korvex_${name}_gen PRIVATE -O2)
  set(out ${CMAKE_BINARY_DIR}/generated/${name}.cpp)
  add_custom_command(
    OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
    COMMAND korvex_${name}_gen ${out}
    DEPENDS korvex_${name}_gen
    COMMENT "Generating ${name}")
  set(KORVEX_SOURCES ${KORVEX_SOURCES} ${out} PARENT_SCOPE)
  set(KORVEX_GENERATED_SOURCES ${KORVEX_GENERATED_SOURCES} ${out} PARENT_SCOPE)
endfunction()

# p_table: the doubling table of the CryptoPro-A base point, computed by the
# same builder as GOST_34_10_2001_2P_table.
korvex_generate(p_table ${CMAKE_SOURCE_DIR}/ec/gen/p_table_gen.cpp ${CMAKE_SOURCE_DIR}/ec/curves_2001.cpp)
# ec_comb: the fixed-base tables of the built-in curves (ec/comb.h), computed
# with the engine's own header-only arithmetic.
korvex_generate(ec_comb ${CMAKE_SOURCE_DIR}/ec/gen/comb_gen.cpp)

# The instrumented test build (tests/, created later) compiles the same source
# list; make it wait for the generated file too.
add_custom_target(korvex_generated DEPENDS ${KORVEX_GENERATED_SOURCES})
function(korvex_generated_deps)
  if(TARGET korvex_asan)
    add_dependencies(korvex_asan korvex_generated)
  endif()
endfunction()
cmake_language(DEFER CALL korvex_generated_deps)
