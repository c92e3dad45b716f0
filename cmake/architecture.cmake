# Architecture and sanitizer flags apply to everything in the tree (GoogleTest included),
# so that every object of one tree shares one ABI.
if(DEWARP_ARCH STREQUAL "i386")
  set(DEWARP_ARCH_FLAGS "-m32 -msse2 -mfpmath=sse")
  set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
  set(FIND_LIBRARY_USE_LIB32_PATHS ON)
  set_property(GLOBAL PROPERTY FIND_LIBRARY_USE_LIB64_PATHS OFF)
elseif(DEWARP_ARCH STREQUAL "x86_64")
  set(DEWARP_ARCH_FLAGS "-msse2")
else()
  message(FATAL_ERROR "DEWARP_ARCH must be x86_64 or i386, not '${DEWARP_ARCH}'")
endif()

# Reproducible floating point on both architectures: no contraction into FMA, no fast-math.
set(DEWARP_FP_FLAGS "-ffp-contract=off")

if(DEWARP_SANITIZE STREQUAL "address")
  set(DEWARP_SAN_FLAGS "-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer")
elseif(DEWARP_SANITIZE STREQUAL "thread")
  set(DEWARP_SAN_FLAGS "-fsanitize=thread -fno-omit-frame-pointer")
elseif(DEWARP_SANITIZE STREQUAL "fuzzer")
  # libFuzzer tree (clang): the engine is instrumented for coverage, AddressSanitizer and UBSan;
  # the fuzz targets add -fsanitize=fuzzer at link time.
  set(DEWARP_SAN_FLAGS "-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer")
elseif(DEWARP_SANITIZE)
  message(FATAL_ERROR "DEWARP_SANITIZE must be address, thread, fuzzer or empty")
endif()

string(APPEND CMAKE_C_FLAGS " ${DEWARP_ARCH_FLAGS} ${DEWARP_FP_FLAGS} ${DEWARP_SAN_FLAGS}")
string(APPEND CMAKE_CXX_FLAGS " ${DEWARP_ARCH_FLAGS} ${DEWARP_FP_FLAGS} ${DEWARP_SAN_FLAGS}")
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS " ${DEWARP_ARCH_FLAGS} ${DEWARP_SAN_FLAGS}")
endforeach()

# Some Linux kernels run no 32-bit programs (no IA-32 emulation). There the i386 tree runs its
# test programs through the user-mode emulator qemu-i386, which executes the same SSE2 code.
if(DEWARP_ARCH STREQUAL "i386" AND NOT DEFINED DEWARP_I386_RUNS_NATIVELY)
  set(probe_dir ${CMAKE_BINARY_DIR}/CMakeFiles/i386-probe)
  file(WRITE ${probe_dir}/probe.c "int main(void) { return 0; }\n")
  execute_process(COMMAND ${CMAKE_C_COMPILER} -m32 ${probe_dir}/probe.c -o ${probe_dir}/probe
                  RESULT_VARIABLE compiled OUTPUT_QUIET ERROR_QUIET)
  execute_process(COMMAND ${probe_dir}/probe RESULT_VARIABLE ran OUTPUT_QUIET ERROR_QUIET)
  if(compiled EQUAL 0 AND ran EQUAL 0)
    set(DEWARP_I386_RUNS_NATIVELY ON CACHE BOOL "32-bit programs run on this kernel")
  else()
    set(DEWARP_I386_RUNS_NATIVELY OFF CACHE BOOL "32-bit programs run on this kernel")
  endif()
endif()
if(DEWARP_ARCH STREQUAL "i386" AND NOT DEWARP_I386_RUNS_NATIVELY)
  find_program(DEWARP_QEMU_I386 qemu-i386 REQUIRED)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${DEWARP_QEMU_I386})
  message(STATUS "i386 programs run through ${DEWARP_QEMU_I386}")
endif()
