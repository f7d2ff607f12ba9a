# Warnings are errors on our own code only; third-party code built alongside
# (GoogleTest from source in the i386 build) keeps its own flags.
function(vesk_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
