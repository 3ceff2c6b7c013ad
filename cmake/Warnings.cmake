# Link to kmr_warnings to have every warning that the code is kept free of.
add_library(kmr_warnings INTERFACE)
target_compile_options(kmr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
