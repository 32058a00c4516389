# What every target of this project is compiled with. Two interface targets: one says how our own code is
# compiled, one adds the sanitizers that were asked for.

add_library(kovdoa_compile_options INTERFACE)
target_compile_features(kovdoa_compile_options INTERFACE cxx_std_20)
target_compile_options(kovdoa_compile_options INTERFACE
    -Wall -Wextra -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>
    # Results are part of the interface down to the last rounding: no fused multiply-add, no fast-math.
    -ffp-contract=off
    # Nobody looks at the floating-point exception flags; with them given up, and no result changed, loops that
    # compare or convert can be vectorised.
    -fno-trapping-math
    $<$<BOOL:${KOVDOA_WARNINGS_AS_ERRORS}>:-Werror>)

add_library(kovdoa_sanitizers INTERFACE)
if(KOVDOA_SANITIZE)
    # With more optimisation the checks that are woven in take several times longer to compile; reports need the lines,
    # not the variables.
    target_compile_options(kovdoa_sanitizers INTERFACE
        -fsanitize=${KOVDOA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
    target_link_options(kovdoa_sanitizers INTERFACE -fsanitize=${KOVDOA_SANITIZE})
endif()

# Gives a target of ours the options above; -O3 because the row kernels rely on the vectoriser.
function(kovdoa_configure_target target)
    target_link_libraries(${target} PRIVATE kovdoa_compile_options kovdoa_sanitizers)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3>)
    set_target_properties(${target} PROPERTIES
        C_STANDARD 99
        C_EXTENSIONS OFF
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        C_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endfunction()
