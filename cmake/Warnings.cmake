# Project-wide warning flags; VESK_WERROR turns them into errors.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow=local -Wno-unused-parameter)
if(VESK_WERROR)
  add_compile_options(-Werror)
endif()
