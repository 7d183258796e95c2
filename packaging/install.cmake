# Where an installed workbench lives, following the layout Linux users expect:
#
#   bin/tarnic-workbench                       link to the program, for a shell
#   bin/tarnic                                 link to the batch tool
#   lib/tarnic-workbench/tarnic-workbench      the program
#   lib/tarnic-workbench/tarnic                the batch tool
#   lib/tarnic-workbench/Tarnic.dll            its numeric library, beside it
#   lib/tarnic-workbench/examples              link to the examples
#   share/tarnic-workbench/examples/           the example signals and their README
#   share/applications/tarnic-workbench.desktop
#   share/icons/hicolor/scalable/apps/tarnic-workbench.svg
#   share/metainfo/tarnic-workbench.metainfo.xml  package description and licence
#   share/doc/tarnic-workbench/                README, LICENSE, user guide and its pictures
#
# The program looks for Tarnic.dll in the list of the directory it is started
# from and loads it from its own folder, so the menu entry starts it with its
# own folder as the working directory. The folder of the program resolves
# through the link in bin/, so the library is found from a shell as well.
include(GNUInstallDirs)

set(TARNIC_INSTALL_APP_DIR ${CMAKE_INSTALL_LIBDIR}/tarnic-workbench)
set(TARNIC_INSTALL_DATA_DIR ${CMAKE_INSTALL_DATADIR}/tarnic-workbench)
set(TARNIC_INSTALL_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/tarnic-workbench)

install(TARGETS tarnic-workbench tarnic RUNTIME DESTINATION ${TARNIC_INSTALL_APP_DIR})
install(TARGETS Tarnic LIBRARY DESTINATION ${TARNIC_INSTALL_APP_DIR})
install(DIRECTORY ${TARNIC_APP_DIR}/examples/ DESTINATION ${TARNIC_INSTALL_DATA_DIR}/examples)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/tarnic-workbench.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/tarnic-workbench.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/README.md ${CMAKE_SOURCE_DIR}/LICENSE
              ${CMAKE_SOURCE_DIR}/docs/USER_GUIDE.md ${CMAKE_SOURCE_DIR}/docs/THIRD_PARTY.md
        DESTINATION ${TARNIC_INSTALL_DOC_DIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/images DESTINATION ${TARNIC_INSTALL_DOC_DIR})

# The links and the menu entry name absolute places below the prefix, which is
# only known for sure when installing (cmake --install --prefix), so they are
# made then. DESTDIR is honoured for staged installs by packagers.
install(CODE "
    set(root \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    set(app_dir \"\${CMAKE_INSTALL_PREFIX}/${TARNIC_INSTALL_APP_DIR}\")
    file(MAKE_DIRECTORY \"\${root}/${CMAKE_INSTALL_BINDIR}\")
    file(RELATIVE_PATH to_program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\"
         \"\${app_dir}/tarnic-workbench\")
    file(CREATE_LINK \"\${to_program}\" \"\${root}/${CMAKE_INSTALL_BINDIR}/tarnic-workbench\" SYMBOLIC)
    file(RELATIVE_PATH to_tool \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\"
         \"\${app_dir}/tarnic\")
    file(CREATE_LINK \"\${to_tool}\" \"\${root}/${CMAKE_INSTALL_BINDIR}/tarnic\" SYMBOLIC)
    file(RELATIVE_PATH to_examples \"\${app_dir}\"
         \"\${CMAKE_INSTALL_PREFIX}/${TARNIC_INSTALL_DATA_DIR}/examples\")
    file(CREATE_LINK \"\${to_examples}\" \"\${root}/${TARNIC_INSTALL_APP_DIR}/examples\" SYMBOLIC)
    message(STATUS \"Installing: \${root}/${CMAKE_INSTALL_BINDIR}/tarnic-workbench -> \${to_program}\")
    set(APP_DIR \"\${app_dir}\")
    configure_file(\"${CMAKE_SOURCE_DIR}/packaging/tarnic-workbench.desktop.in\"
                   \"\${root}/${CMAKE_INSTALL_DATADIR}/applications/tarnic-workbench.desktop\" @ONLY)
    message(STATUS \"Installing: \${root}/${CMAKE_INSTALL_DATADIR}/applications/tarnic-workbench.desktop\")
")
