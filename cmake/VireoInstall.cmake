# Where an install puts things. The shell's libraries (the toolkit, the foundation,
# vtvcore) have no versioned SONAME and no users outside this project, so they live in
# a private folder, not in the public library folder, and the appliance plugins beside
# them. Programs and plugins find them through RPATHs relative to their own folders
# ($ORIGIN), so an installed tree works under any prefix.
include(GNUInstallDirs)

set(VIREO_INSTALL_PRIVATE_LIBDIR "${CMAKE_INSTALL_LIBDIR}/mediashell")
set(VIREO_INSTALL_APPLIANCE_DIR "${VIREO_INSTALL_PRIVATE_LIBDIR}/appliances")

# The path from the installed folder DIR (relative to the prefix, or absolute) to the
# folder TARGET_DIR, for RPATHs and for the shell's search of its plugins.
function(vireo_install_relative_path out dir target_dir)
  cmake_path(ABSOLUTE_PATH dir BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE _from)
  cmake_path(ABSOLUTE_PATH target_dir BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}"
    OUTPUT_VARIABLE _to)
  file(RELATIVE_PATH _relative "${_from}" "${_to}")
  set(${out} "${_relative}" PARENT_SCOPE)
endfunction()

# TARGET, installed into DIR, finds the private libraries.
function(vireo_set_install_rpath target dir)
  vireo_install_relative_path(_relative "${dir}" "${VIREO_INSTALL_PRIVATE_LIBDIR}")
  if(_relative STREQUAL "")
    set(_rpath "$ORIGIN")
  else()
    set(_rpath "$ORIGIN/${_relative}")
  endif()
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${_rpath}")
endfunction()
