# vantlo_room(NAME SOURCES... [USES rooms...]): one room of the house as a static library `room_NAME`.
function(vantlo_room name)
    cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;USES")
    add_library(room_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(room_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    foreach(used IN LISTS ROOM_USES)
        target_link_libraries(room_${name} PUBLIC room_${used})
    endforeach()
endfunction()
