# Found in <Corvix>/cmake when CMAKE_PREFIX_PATH or Corvix_ROOT is <Corvix>; the package itself is beside the SDK.
include("${CMAKE_CURRENT_LIST_DIR}/../sdk/cmake/CorvixConfig.cmake")
