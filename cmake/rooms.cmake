# vantlo_room(NAME SOURCES... [USES rooms...]): one room of the house as a static library `room_NAME`, which hosts know
# as `vantlo::NAME`, in the tree and installed.
function(vantlo_room name)
    cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;USES")
    add_library(room_${name} STATIC ${ROOM_SOURCES})
    add_library(vantlo::${name} ALIAS room_${name})
    target_include_directories(room_${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                                   $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vantlo>)
    target_compile_features(room_${name} PUBLIC cxx_std_20)
    set_target_properties(room_${name} PROPERTIES EXPORT_NAME ${name} OUTPUT_NAME vantlo_${name})
    foreach(used IN LISTS ROOM_USES)
        target_link_libraries(room_${name} PUBLIC room_${used})
    endforeach()
endfunction()
