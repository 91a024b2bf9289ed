# Source selection by naming rule, so a new file lands in the right target without
# editing the build: in the model folders a file is a window (`*_window.cpp`) or a Qt
# adapter (`qt_*.cpp`) and goes to kdxgui; anything else there is Qt-free and goes
# to kdxcore. The main window, the small windows, the widgets they share and the
# application that wires them are GUI through and through.
set(KDX_MODEL_DIRS core link config telemetry tuning sim platform)

function(kdx_collect_core out)
  set(result)
  foreach(dir ${KDX_MODEL_DIRS})
    file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${dir}/*.cpp)
    foreach(f ${files})
      get_filename_component(name ${f} NAME)
      if(NOT name MATCHES "_window\\.cpp$" AND NOT name MATCHES "^qt_")
        list(APPEND result ${f})
      endif()
    endforeach()
  endforeach()
  set(${out} ${result} PARENT_SCOPE)
endfunction()

function(kdx_collect_gui out)
  set(result)
  foreach(dir ${KDX_MODEL_DIRS})
    file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${dir}/*.cpp)
    foreach(f ${files})
      get_filename_component(name ${f} NAME)
      if(name MATCHES "_window\\.cpp$" OR name MATCHES "^qt_")
        list(APPEND result ${f})
      endif()
    endforeach()
  endforeach()
  file(GLOB more CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/src/mainwindow/*.cpp
    ${PROJECT_SOURCE_DIR}/src/windows/*.cpp
    ${PROJECT_SOURCE_DIR}/src/widgets/*.cpp
    ${PROJECT_SOURCE_DIR}/src/app/*.cpp)
  # main() is kdxtool's own; the application class it runs is shared with the tests.
  list(FILTER more EXCLUDE REGEX "/app/main\\.cpp$")
  list(APPEND result ${more})
  # Headers of Q_OBJECT classes must be listed for AUTOMOC to see them.
  foreach(dir ${KDX_MODEL_DIRS} mainwindow windows)
    file(GLOB hdrs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${dir}/*_window.h
                                     ${PROJECT_SOURCE_DIR}/src/${dir}/qt_*.h)
    list(APPEND result ${hdrs})
  endforeach()
  file(GLOB more_h CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/src/mainwindow/*.h
    ${PROJECT_SOURCE_DIR}/src/windows/*.h
    ${PROJECT_SOURCE_DIR}/src/widgets/*.h)
  list(APPEND result ${more_h})
  set(${out} ${result} PARENT_SCOPE)
endfunction()
