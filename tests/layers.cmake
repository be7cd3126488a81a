# An include of a layer above must not compile.
function(must_not_include layer header)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/layers/${layer}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n")
    set(includes $<TARGET_PROPERTY:${layer},INCLUDE_DIRECTORIES>)
    add_test(NAME Layers-${layer}
        COMMAND ${CMAKE_CXX_COMPILER} -std=c++17 -fPIC -fsyntax-only -I$<JOIN:${includes},$<SEMICOLON>-I>
            ${source}
        COMMAND_EXPAND_LISTS)
    set_tests_properties(Layers-${layer} PROPERTIES
        PASS_REGULAR_EXPRESSION "fatal error: ${header}: No such file")
endfunction()

must_not_include(MoskProtocols texts/MoskSettings.h)
must_not_include(MoskTexts instruments/Shell.h)
must_not_include(MoskInstruments pages/BasicTester.h)
must_not_include(MoskPages frame/MoskTester.h)
