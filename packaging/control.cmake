# Run by CPack on the finished packages: a trigger renews the linker's cache, so the scripts that
# CPack adds for it go; and packages of several architectures may stand side by side.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${package}.tree)
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
  file(READ ${tree}/DEBIAN/control control)
  string(STRIP "${control}" control)
  # The cross compiler's C library is named with its architecture, which is the package's own.
  string(REGEX REPLACE ":[a-z0-9]+ \\(" " (" control "${control}")
  if(control MATCHES "Package: lib")
    file(WRITE ${tree}/DEBIAN/control "${control}\nMulti-Arch: same\n")
  else()
    file(WRITE ${tree}/DEBIAN/control "${control}\nMulti-Arch: foreign\n")
  endif()
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${tree})
endforeach()
