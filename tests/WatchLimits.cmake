# Which tests of what depends on the number of watched directories can be had on this machine. Those
# that cannot are not built; a test that is built never passes by being left out.

# Where the user may watch few, in a user namespace with a limit of its own.
set(with_few_watches ${CMAKE_CURRENT_SOURCE_DIR}/support/launchers/with-few-watches)
execute_process(COMMAND ${with_few_watches} true
  RESULT_VARIABLE few_watches_status OUTPUT_QUIET ERROR_QUIET)
if(few_watches_status EQUAL 0)
  set(can_have_few_watches TRUE)
  set(few_watches_text yes)
else()
  set(can_have_few_watches FALSE)
  set(few_watches_text "no (needs user namespaces)")
endif()

# Where he may watch as many as a storm of folders needs, with what is left to other programs.
set(needed_watches 30000)
set(can_have_many_watches TRUE)
set(many_watches_text yes)
foreach(setting fs/inotify/max_user_watches user/max_inotify_watches)
  if(EXISTS /proc/sys/${setting})
    file(STRINGS /proc/sys/${setting} count)
    if(count LESS needed_watches)
      string(REPLACE / . setting_name ${setting})
      set(can_have_many_watches FALSE)
      set(many_watches_text "no (needs ${setting_name} of ${needed_watches})")
    endif()
  endif()
endforeach()

message(STATUS
  "Limits of watches tested: few ${few_watches_text}, many ${many_watches_text}")
