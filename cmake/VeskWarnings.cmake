# Warnings are errors on our own code only; third-party code built alongside
# (GoogleTest from source in the i386 build) keeps its own flags.
function(vesk_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()

# Our shared libraries call their own exported functions all the time (a reader's byte at a
# time, a map's string comparisons); without interposition of those symbols the compiler may
# call them directly and inline them.
function(vesk_shared_library_options target)
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
endfunction()
