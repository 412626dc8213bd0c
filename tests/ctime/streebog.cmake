# Streebog's kernels: a static build of the hash sources (with the cipher
# under GOST R 34.11-94), so that the tests can reach the internal kernel
# switch: the kernels against each other, and the hash suite with every
# compression kept on the portable kernel.
file(GLOB _hash_src CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/hash/*.cpp ${CMAKE_SOURCE_DIR}/cipher/*.cpp)
add_library(korvex_hash_static STATIC EXCLUDE_FROM_ALL ${_hash_src})
target_include_directories(korvex_hash_static PUBLIC ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR})
target_compile_options(korvex_hash_static PRIVATE -O2 -fno-exceptions -fno-rtti)

add_executable(test_streebog_kernels streebog_kernels_test.cpp portable_main.cpp)
target_include_directories(test_streebog_kernels PRIVATE ${CMAKE_SOURCE_DIR}/tests)
target_compile_definitions(test_streebog_kernels PRIVATE KORVEX_VECTORS_DIR="${KORVEX_VECTORS_DIR}")
target_link_libraries(test_streebog_kernels PRIVATE korvex_hash_static GTest::gtest)
gtest_discover_tests(test_streebog_kernels DISCOVERY_TIMEOUT 60 PROPERTIES LABELS hash)

file(GLOB _hash_tests CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/hash/*_test.cpp)
add_executable(test_hash_portable ${_hash_tests} portable_main.cpp)
target_include_directories(test_hash_portable PRIVATE ${CMAKE_SOURCE_DIR}/tests)
target_compile_definitions(test_hash_portable PRIVATE KORVEX_VECTORS_DIR="${KORVEX_VECTORS_DIR}" KORVEX_FORCE_PORTABLE)
target_link_libraries(test_hash_portable PRIVATE korvex_hash_static GTest::gtest)
gtest_discover_tests(test_hash_portable TEST_PREFIX portable. DISCOVERY_TIMEOUT 60 PROPERTIES LABELS hash)

add_executable(ctime_hash ctime_hash.cpp)
target_link_libraries(ctime_hash PRIVATE Korvex)
if(VALGRIND_EXECUTABLE)
  add_test(NAME ctime_hash COMMAND ${VALGRIND_EXECUTABLE} -q --error-exitcode=1 --track-origins=yes $<TARGET_FILE:ctime_hash>)
  set_tests_properties(ctime_hash PROPERTIES LABELS ctime)
endif()
