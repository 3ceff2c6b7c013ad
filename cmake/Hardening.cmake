# Link to kmr_hardening for the compiler's and the linker's protections and, with KMR_SANITIZE, the
# sanitizers.
add_library(kmr_hardening INTERFACE)
target_compile_options(kmr_hardening INTERFACE -fstack-protector-strong)
target_link_options(kmr_hardening INTERFACE -Wl,-z,relro,-z,now)

if(KMR_SANITIZE)
    target_compile_options(kmr_hardening INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kmr_hardening INTERFACE -fsanitize=address,undefined)
endif()
