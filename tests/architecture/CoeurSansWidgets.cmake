# Fails when a source file of a core folder includes a Qt Widgets header: the core runs headless
# and builds on machines without Qt Widgets; only src/gui may use them.
#   cmake -DSOURCES=<src folder> -DWIDGETS=<QtWidgets include folder> -P CoeurSansWidgets.cmake
cmake_minimum_required(VERSION 3.25)
set(dossiers app db stats output transfer settings media)
set(fautes "")
# The usual ones, for machines without the Qt Widgets headers; the installed list when there.
set(entetes_widgets QWidget QApplication QMainWindow QDialog QMessageBox QPushButton QLabel
    QTableView QHeaderView QTabWidget QTabBar QComboBox QMenu QMenuBar QSystemTrayIcon QLineEdit
    QPrinter QPrintDialog QPrintPreviewDialog QFileDialog QStyle QStyleOption)
if(WIDGETS AND IS_DIRECTORY "${WIDGETS}")
    file(GLOB installes RELATIVE "${WIDGETS}" "${WIDGETS}/*")
    list(APPEND entetes_widgets ${installes})
endif()
set(verifies 0)
foreach(d IN LISTS dossiers)
    file(GLOB_RECURSE fichiers "${SOURCES}/${d}/*.h" "${SOURCES}/${d}/*.cpp")
    foreach(f IN LISTS fichiers)
        math(EXPR verifies "${verifies} + 1")
        file(STRINGS "${f}" lignes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
        foreach(l IN LISTS lignes)
            string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[<\"]([^>\"]+)[>\"].*" "\\1" inc "${l}")
            get_filename_component(nom "${inc}" NAME)
            if(inc MATCHES "^QtWidgets/" OR inc MATCHES "^QtPrintSupport/" OR
               (NOT inc MATCHES "/" AND nom IN_LIST entetes_widgets))
                list(APPEND fautes "${f}: ${inc}")
            endif()
        endforeach()
    endforeach()
endforeach()
if(verifies EQUAL 0)
    message(FATAL_ERROR "no core source found under ${SOURCES}")
endif()
if(fautes)
    list(JOIN fautes "\n  " texte)
    message(FATAL_ERROR "core files include Qt Widgets headers:\n  ${texte}")
endif()
message(STATUS "${verifies} core files checked: no Qt Widgets header")
