# The program `quillbox`. This file is included after all targets that the program links.
set(folder ${CMAKE_CURRENT_LIST_DIR})
add_executable(quillbox ${folder}/main.cpp ${folder}/command_backup.cpp ${folder}/command_names.cpp ${folder}/command_outcome.cpp
                        ${folder}/command_profile.cpp ${folder}/command_restore.cpp ${folder}/command_run.cpp
                        ${folder}/command_session.cpp ${folder}/command_sets.cpp ${folder}/data_digest.cpp ${folder}/set_care.cpp ${folder}/telling.cpp
                        ${folder}/terminal.cpp)
quillbox_compile_small(quillbox)
quillbox_compile_quickly(quillbox)
target_link_libraries(quillbox PRIVATE quillbox_flags quillbox_program platform_device platform_headless platform_kernel platform_text
                                       platform_resource quillbox_resources platform_start archive nlohmann_json::nlohmann_json)
# The window is a module that the program loads when it needs a window. The module uses the window core of the program. So
# the program exports the namespaces that the module uses. If it exported all its symbols, each start would take longer and
# 0.2 MB more memory.
foreach(name display kernel text window)
  string(LENGTH ${name} characters)
  target_link_options(quillbox PRIVATE "LINKER:--export-dynamic-symbol=*8platform${characters}${name}*")
endforeach()
if(QUILLBOX_WINDOW)
  add_dependencies(quillbox quillbox_qt_display)
endif()
