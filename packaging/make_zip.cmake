# Zip files with the same bytes at any time, on any machine.

# Zip keeps times without a zone: a fixed one, as this zone shows it.
set(ENV{TZ} UTC)
set(kTime 202601010000.00)

# make_zip(FILE FOLDER): of all that lies in the folder.
function(make_zip file_name folder)
  file(GLOB_RECURSE files RELATIVE ${folder} ${folder}/*)
  list(SORT files)
  foreach(file ${files})
    file(CHMOD ${folder}/${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    execute_process(COMMAND touch -t ${kTime} ${folder}/${file} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
  # -X leaves the owner out, -D the folders.
  execute_process(COMMAND ${ZIP} -q -9 -X -D ${file_name} ${files} WORKING_DIRECTORY ${folder}
                  COMMAND_ERROR_IS_FATAL ANY)
endfunction()
