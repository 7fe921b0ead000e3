# The build tree is laid out like an installed tree, so that the library finds its resources the same
# way in both: lib/CoreImageFilter holds the libraries, share/CoreImageFilter the resources.
set(CIF_LIB_DIR ${CMAKE_BINARY_DIR}/lib/CoreImageFilter)
set(CIF_SHARE_DIR ${CMAKE_BINARY_DIR}/share/CoreImageFilter)
set(CIF_BIN_DIR ${CMAKE_BINARY_DIR}/bin)
