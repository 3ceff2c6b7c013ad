# Link to kmr_warnings to have every warning that the code is kept free of. They are errors in a build
# with tests; whoever only ships the product may have a compiler that warns of more.
add_library(kmr_warnings INTERFACE)
target_compile_options(kmr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${KMR_TESTS}>:-Werror>)
