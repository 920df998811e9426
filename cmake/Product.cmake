# How the plug-in is built for a product: with the hardening flags of the distribution (dpkg-buildflags), the same bytes in
# whatever folder, and its debug symbols in a file of its own.

add_compile_options(-g -O2 -fstack-protector-strong -Wformat -Werror=format-security -Wdate-time
                    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
add_compile_definitions(NDEBUG _FORTIFY_SOURCE=2)
add_link_options(-Wl,-z,relro -Wl,-z,now)

# split_debug_symbols(NAME): moves them from the module to NAME.so.debug beside it, where debuggers look for it.
function(split_debug_symbols name)
  add_custom_command(TARGET ${name} POST_BUILD VERBATIM
    WORKING_DIRECTORY "$<TARGET_FILE_DIR:${name}>"
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --compress-debug-sections ${name}.so ${name}.so.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-unneeded --add-gnu-debuglink=${name}.so.debug ${name}.so)
endfunction()
