# The module's levels, from the bottom. A level may include its own headers
# and those of the levels below it, never those above:
#   records   the persisted schedule records and their date scale
#   motion    key frames and tracks, the clocks, the scene effects
#   playback  the managers, playback, the schedule video, the entry point
#   forms     the forms and timelines
# Where a lower level must reach a higher one (a clock telling playback that a
# preview ended), it declares a small interface that the higher one
# implements.
set(KVX_MODULE_LEVELS records motion playback forms)

# Puts files of the current folder (headers and sources) on a level.
function(kvx_module_files level)
    if(NOT level IN_LIST KVX_MODULE_LEVELS)
        message(FATAL_ERROR "unknown module level: ${level}")
    endif()
    foreach(file IN LISTS ARGN)
        file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/${file})
        set_property(GLOBAL APPEND PROPERTY KVX_LEVEL_${level} ${path})
    endforeach()
endfunction()

# One object library per level, all in the module's shared library. Each
# level is compiled from a tree of links under the build folder that holds
# its own files and only the headers of the levels below it, and the host's
# include root holds only host/: a backward include, however it is spelt,
# does not compile ("No such file or directory").
function(kvx_add_module_levels module)
    set(lowerHeaders "")
    set(below "")
    foreach(level IN LISTS KVX_MODULE_LEVELS)
        get_property(files GLOBAL PROPERTY KVX_LEVEL_${level})
        set(tree ${CMAKE_BINARY_DIR}/levels/${level})
        # Made anew, so that a file moved up a level leaves no link behind.
        file(REMOVE_RECURSE ${tree})
        set(sources "")
        foreach(path IN LISTS lowerHeaders files)
            get_filename_component(folder ${tree}/${path} DIRECTORY)
            file(MAKE_DIRECTORY ${folder})
            file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${path} ${tree}/${path} SYMBOLIC)
        endforeach()
        foreach(path IN LISTS files)
            # The level's own headers are sources too, so that AUTOMOC
            # always scans them: one added later gets its moc at once.
            list(APPEND sources ${tree}/${path})
            if(NOT path MATCHES "\\.cpp$")
                list(APPEND lowerHeaders ${path})
            endif()
        endforeach()
        add_library(kvx_${level} OBJECT ${sources})
        # AUTOMOC under Ninja reruns only for the files its last run saw, so
        # a class added to the level would get no moc: when the level's file
        # list changes, its autogen folder is dropped and made again.
        string(JOIN "\n" listing ${files})
        set(listingFile ${CMAKE_BINARY_DIR}/levels/${level}.files)
        set(previous "")
        if(EXISTS ${listingFile})
            file(READ ${listingFile} previous)
        endif()
        if(NOT previous STREQUAL listing)
            file(REMOVE_RECURSE ${CMAKE_BINARY_DIR}/kvx_${level}_autogen)
            file(WRITE ${listingFile} "${listing}")
        endif()
        target_include_directories(kvx_${level} PRIVATE ${tree})
        target_link_libraries(kvx_${level} PUBLIC kvxhost ${below})
        target_sources(${module} PRIVATE $<TARGET_OBJECTS:kvx_${level}>)
        set(below kvx_${level})
    endforeach()
endfunction()
