# The program as the user starts it. Included after all targets that it links.
add_executable(quillbox ${CMAKE_CURRENT_LIST_DIR}/main.cpp)
target_link_libraries(quillbox PRIVATE quillbox_flags quillbox_program platform_device platform_headless platform_kernel platform_text
                                       platform_resource quillbox_resources platform_start)
# The window is a module that is loaded when there is a desktop. It uses the window core of the program.
set_target_properties(quillbox PROPERTIES ENABLE_EXPORTS ON)
if(QUILLBOX_WINDOW)
  add_dependencies(quillbox quillbox_qt_display)
endif()
