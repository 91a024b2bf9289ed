# Install layout: the two programs, their manual pages and the README, and with the GUI
# the desktop entry and the application icon (SVG, plus PNG sizes rendered from it at
# build time). `cmake --install BUILD --prefix /usr` lays it out as a distribution would.
include(GNUInstallDirs)

set(KDX_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/kdx-tool)
set(KDX_PACKAGING_DIR ${PROJECT_SOURCE_DIR}/packaging)
set(KDX_PACKAGING_OUT ${PROJECT_BINARY_DIR}/packaging)

install(TARGETS kdxctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${KDX_DOC_DIR})

# Manual pages carry the project's version; Debian wants them compressed with gzip -9n
# (no name or time stamp in the header, so the same page always gives the same bytes).
set(KDX_MAN_PAGES kdxctl)
if(KDX_GUI)
  list(APPEND KDX_MAN_PAGES kdxtool)
endif()
find_program(KDX_GZIP gzip)
set(KDX_MAN_FILES)
foreach(page ${KDX_MAN_PAGES})
  configure_file(${KDX_PACKAGING_DIR}/${page}.1.in ${KDX_PACKAGING_OUT}/${page}.1 @ONLY)
  if(KDX_GZIP)
    add_custom_command(
      OUTPUT ${KDX_PACKAGING_OUT}/${page}.1.gz
      COMMAND ${KDX_GZIP} -9 -n -k -f ${KDX_PACKAGING_OUT}/${page}.1
      DEPENDS ${KDX_PACKAGING_OUT}/${page}.1
      COMMENT "Compressing the ${page}(1) manual page"
      VERBATIM)
    list(APPEND KDX_MAN_FILES ${KDX_PACKAGING_OUT}/${page}.1.gz)
  else()
    list(APPEND KDX_MAN_FILES ${KDX_PACKAGING_OUT}/${page}.1)
  endif()
endforeach()
add_custom_target(kdx_man_pages ALL DEPENDS ${KDX_MAN_FILES})
install(FILES ${KDX_MAN_FILES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

if(KDX_GUI)
  install(TARGETS kdxtool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${KDX_PACKAGING_DIR}/kdxtool.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)

  set(KDX_ICON ${PROJECT_SOURCE_DIR}/resources/kdxtool.svg)
  set(KDX_ICON_THEME ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES ${KDX_ICON} DESTINATION ${KDX_ICON_THEME}/scalable/apps)

  # The PNG sizes are rendered with the Qt Svg module the program already uses.
  add_executable(kdx_render_icon ${KDX_PACKAGING_DIR}/render_icon.cpp)
  target_link_libraries(kdx_render_icon PRIVATE Qt6::Gui Qt6::Svg)
  set(KDX_ICON_SIZES 16 24 32 48 64 128 256)
  set(KDX_ICON_PNGS)
  foreach(size ${KDX_ICON_SIZES})
    list(APPEND KDX_ICON_PNGS ${KDX_PACKAGING_OUT}/icons/${size}x${size}/kdxtool.png)
  endforeach()
  add_custom_command(
    OUTPUT ${KDX_ICON_PNGS}
    COMMAND kdx_render_icon ${KDX_ICON} ${KDX_PACKAGING_OUT}/icons ${KDX_ICON_SIZES}
    DEPENDS kdx_render_icon ${KDX_ICON}
    COMMENT "Rendering the application icon to PNG"
    VERBATIM)
  add_custom_target(kdx_icons ALL DEPENDS ${KDX_ICON_PNGS})
  foreach(size ${KDX_ICON_SIZES})
    install(FILES ${KDX_PACKAGING_OUT}/icons/${size}x${size}/kdxtool.png
            DESTINATION ${KDX_ICON_THEME}/${size}x${size}/apps)
  endforeach()
endif()
