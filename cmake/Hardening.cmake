# Link to kmr_hardening for the hardening options of compiler and linker and, with KMR_SANITIZE, the
# sanitizers, with KMR_FUZZ the instrumentation for fuzzers, with KMR_COVERAGE the counters.
add_library(kmr_hardening INTERFACE)
target_compile_options(kmr_hardening INTERFACE -fstack-protector-strong)
target_link_options(kmr_hardening INTERFACE -Wl,-z,relro,-z,now)

if(KMR_SANITIZE)
    target_compile_options(kmr_hardening INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kmr_hardening INTERFACE -fsanitize=address,undefined)
endif()

if(KMR_FUZZ)
    target_compile_options(kmr_hardening INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(KMR_COVERAGE)
    set(coverage_options -fprofile-instr-generate -fcoverage-mapping -fcoverage-mcdc)
    # Clang 19 warns of more than the supported compilers, also inside GCC 12's library.
    target_compile_options(kmr_hardening INTERFACE ${coverage_options} -Wno-error)
    target_link_options(kmr_hardening INTERFACE ${coverage_options})
endif()
