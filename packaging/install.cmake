# What `cmake --install` puts where. The packages of debian/ take their files from there.

install(TARGETS quarlo tapetool kyrtool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY resources/formats resources/jobs resources/open DESTINATION ${CMAKE_INSTALL_DATADIR}/quarlo)
# The pages that the program itself shows as help.
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DATADIR}/quarlo FILES_MATCHING PATTERN "*.md" PATTERN images EXCLUDE
        PATTERN examples EXCLUDE)

# The version stands in CMakeLists.txt alone; the date is that of the build, or SOURCE_DATE_EPOCH's.
string(TIMESTAMP QUARLO_DATE "%Y-%m-%d" UTC)
foreach(page quarlo kyrtool tapetool)
  configure_file(packaging/${page}.1.in packaging/${page}.1 @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/packaging/${page}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()

configure_file(packaging/org.quarlo.Quarlo.metainfo.xml.in packaging/org.quarlo.Quarlo.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/packaging/org.quarlo.Quarlo.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES packaging/org.quarlo.Quarlo.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/quarlo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES packaging/org.quarlo.Quarlo.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/quarlo.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quarlo)
foreach(program kyrtool tapetool)
  install(CODE "file(CREATE_LINK quarlo \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/bash-completion/completions/${program} SYMBOLIC)")
endforeach()

# For those who write modules and programs of their own.
configure_file(packaging/libkyr.pc.in packaging/libkyr.pc @ONLY)
install(TARGETS libkyr ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${CMAKE_BINARY_DIR}/packaging/libkyr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
