# Library sources: every .cpp under the subsystem folders. The memory routines
# the compiler may call on its own (memcpy, memset, ...) live in *_runtime.cpp
# and are built without builtins so that they do not call themselves.
set(KORVEX_SUBSYSTEMS core cipher hash ec rng encoding pki containers)
set(KORVEX_SOURCES)
set(KORVEX_RUNTIME_SOURCES)
foreach(dir ${KORVEX_SUBSYSTEMS})
  file(GLOB _src CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${dir}/*.cpp)
  foreach(f ${_src})
    if(f MATCHES "_runtime\\.cpp$")
      list(APPEND KORVEX_RUNTIME_SOURCES ${f})
    else()
      list(APPEND KORVEX_SOURCES ${f})
    endif()
  endforeach()
endforeach()

# Optimised unless this is a Debug build (debuggers and sanitizers want -O0).
set(KORVEX_LIB_FLAGS
  $<$<NOT:$<CONFIG:Debug>>:-O2> -fno-exceptions -fno-rtti -fno-threadsafe-statics
  -fstack-protector-strong -fno-plt -fno-asynchronous-unwind-tables
)
