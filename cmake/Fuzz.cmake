# VESK_FUZZ: with clang, instrument every library for libFuzzer with ASan and UBSan (any UB stops the
# run), so that the harnesses of tests/fuzz see coverage. Other compilers skip the harnesses.
option(VESK_FUZZ "Build the libFuzzer harnesses of tests/fuzz (clang only)" OFF)
if(VESK_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()
