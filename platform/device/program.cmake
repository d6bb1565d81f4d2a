# The program as the user starts it. Included where all its parts are known.
add_executable(quillbox ${CMAKE_CURRENT_LIST_DIR}/main.cpp)
target_link_libraries(quillbox PRIVATE quillbox_flags quillbox_program platform_device platform_headless
                                       platform_resource quillbox_resources)
