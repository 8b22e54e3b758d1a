# What every target of the project has in common.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

option(WEBSMIDE_WERROR "Warnings are errors, as they are for us; other compilers know other ones" OFF)
add_library(websmide_flags INTERFACE)
target_compile_options(websmide_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    $<$<BOOL:${WEBSMIDE_WERROR}>:-Werror> -fdiagnostics-color=always)
target_include_directories(websmide_flags INTERFACE "${CMAKE_SOURCE_DIR}")
if(WEBSMIDE_SANITIZE)
    add_compile_options(-fsanitize=${WEBSMIDE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${WEBSMIDE_SANITIZE})
    if(WEBSMIDE_SANITIZE STREQUAL "thread")
        add_compile_options(-Wno-tsan)  # Asio's fences, which the sanitizer does not know
    endif()
endif()
if(WEBSMIDE_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
    add_link_options(-fsanitize=address,undefined)
    # Clang 14 puts the function sanitizer's marks where its assembler cannot have them.
    add_compile_options(-fno-sanitize=function)
endif()

# websmide_headers(NAME HEADERS... QT Core|Gui|Widgets...)
# A precompiled header that targets share. GCC writes some 300 MB for Qt's headers: one of each kind will do.
function(websmide_headers name)
    cmake_parse_arguments(arg "" "" "HEADERS;QT" ${ARGN})
    file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/${name}.cpp" CONTENT "")
    add_library(${name} OBJECT "${CMAKE_BINARY_DIR}/${name}.cpp")
    list(TRANSFORM arg_QT PREPEND "Qt6::" OUTPUT_VARIABLE modules)
    target_link_libraries(${name} PRIVATE websmide_flags ${modules})
    target_compile_definitions(${name} PRIVATE ${websmide_qt_definitions})
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

set(websmide_qt_definitions QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS)

# websmide_library(NAME SOURCES... [DEPENDS targets...] [QT Core|Gui|Widgets...])
# A static library; with QT it gets moc, uic and rcc and a precompiled Qt header.
function(websmide_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS;QT" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC websmide_flags ${arg_DEPENDS})
    if(arg_QT)
        list(TRANSFORM arg_QT PREPEND "Qt6::" OUTPUT_VARIABLE modules)
        target_link_libraries(${name} PUBLIC ${modules})
        target_compile_definitions(${name} PUBLIC ${websmide_qt_definitions})
        set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
        if("Widgets" IN_LIST arg_QT)
            target_precompile_headers(${name} REUSE_FROM headers_widgets)
        else()
            target_precompile_headers(${name} REUSE_FROM headers_core)
        endif()
    endif()
endfunction()
