# What a user gets: the programs with the library, the run-time libraries and the plug-ins at the top; what an author
# of plug-ins needs under sdk/.
install(TARGETS corvix RUNTIME DESTINATION . ARCHIVE DESTINATION sdk/lib FILE_SET HEADERS DESTINATION sdk/include)
install(TARGETS corvix-host xmlbinc RUNTIME DESTINATION .)
install(FILES ${CORVIX_RUNTIME_DLLS} DESTINATION .)
install(DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins/" DESTINATION plugins FILES_MATCHING PATTERN "*.dll")
install(FILES sdk/CorvixConfig.cmake cmake/CorvixPlugin.cmake DESTINATION sdk/cmake)
install(DIRECTORY sdk/template DESTINATION sdk)
