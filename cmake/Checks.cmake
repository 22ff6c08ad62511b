# Checks of the source text: test `format`; targets `tidy` (clang-tidy) and `docs` (doxygen, stops at the first warning).

find_program(VSPSC_CLANG_FORMAT NAMES clang-format-14 clang-format)
if(VSPSC_BUILD_TESTS AND VSPSC_CLANG_FORMAT)
    add_test(NAME format COMMAND ${PROJECT_SOURCE_DIR}/tools/check-format.sh)
    set_tests_properties(format PROPERTIES ENVIRONMENT "CLANG_FORMAT=${VSPSC_CLANG_FORMAT}")
endif()

find_program(VSPSC_RUN_CLANG_TIDY NAMES run-clang-tidy-14 run-clang-tidy)
if(VSPSC_RUN_CLANG_TIDY)
    add_custom_target(
        tidy
        COMMAND ${VSPSC_RUN_CLANG_TIDY} -p ${PROJECT_BINARY_DIR} -quiet -extra-arg=-Wno-unknown-warning-option
                "^${PROJECT_SOURCE_DIR}/(bench|examples|fuzz|src|tests|tools|voice)/"
        USES_TERMINAL VERBATIM)
endif()

find_program(VSPSC_DOXYGEN doxygen)
if(VSPSC_DOXYGEN)
    configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
    add_custom_target(docs COMMAND ${VSPSC_DOXYGEN} ${PROJECT_BINARY_DIR}/docs/Doxyfile USES_TERMINAL VERBATIM)
endif()
