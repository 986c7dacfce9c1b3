# The pictures and sounds that every simulated camera sees and hears, made once when the project is built.
#
# A clip is a loop of TESSARO_CLIP_PICTURES pictures. NAME.key holds a key frame of each, followed by the next picture
# as a frame that needs that key frame. NAME.delta holds each picture as a frame that needs the picture before it; it
# begins with the last picture as a key frame, which nobody uses. So a key frame can come at any picture, and what
# follows it decodes; CClip puts the frames together.
#
# Every picture shows its number, as a text and as a row of bits: scaled to 640x360 its lowest 16 rows hold 12 squares
# of 16 dots, white for 1, the lowest bit first.
include(${PROJECT_SOURCE_DIR}/cmake/MadeOnce.cmake)
find_program(FFMPEG_PROGRAM ffmpeg REQUIRED)

set(TESSARO_CLIP_PICTURES 150)
set(clip_folder ${CMAKE_BINARY_DIR}/plugins/device-media)
set(clip_files)

# Pictures of one size as a filter graph for ffmpeg; number: which one comes as the nth.
function(picture_graph result width height number)
    set(n "mod(${number}\\,${TESSARO_CLIP_PICTURES})")
    math(EXPR bit "${height} * 2 / 45")
    math(EXPR ball "${height} / 6 / 2 * 2")
    math(EXPR font "${height} / 4")
    math(EXPR band "${bit} * 2")
    set(graph "smptehdbars=size=${width}x${height}:rate=25[back]")
    string(APPEND graph "$<SEMICOLON>color=c=0xE0B020:size=${ball}x${ball}:rate=25[ball]")
    string(APPEND graph "$<SEMICOLON>[back][ball]overlay=x='(W-w)/2*(1-cos(2*PI*${n}/${TESSARO_CLIP_PICTURES}))'")
    string(APPEND graph ":y='(H-h)/2*(1-sin(6*PI*${n}/${TESSARO_CLIP_PICTURES}))*0.9'")
    string(APPEND graph ",drawtext=text='%{eif\\:${n}\\:d}':x=(w-text_w)/2:y=(h-${font})/2:fontsize=${font}")
    string(APPEND graph ":fontcolor=white:box=1:boxcolor=black")
    string(APPEND graph ",drawbox=x=0:y=ih-${band}:w=iw:h=${band}:color=black:t=fill")
    foreach(k RANGE 11)
        math(EXPR left "${bit} * ${k}")
        math(EXPR weight "1 << ${k}")
        string(APPEND graph ",drawbox=x=${left}:y=ih-${bit}:w=${bit}:h=${bit}:color=white:t=fill")
        string(APPEND graph ":enable='mod(floor(${n}/${weight})\\,2)'")
    endforeach()
    set(${result} "${graph},format=yuv420p" PARENT_SCOPE)
endfunction()

# One file: name, and ffmpeg's arguments.
function(add_clip_file name)
    add_made_once(${clip_folder} ${name} "${ARGN}" ${CMAKE_CURRENT_FUNCTION_LIST_FILE}
                  ${FFMPEG_PROGRAM} -v error -nostdin -y -bitexact -filter_complex_threads 1 ${ARGN} -map_metadata -1
                  ${clip_folder}/${name})
    set(clip_files ${clip_files} ${clip_folder}/${name} PARENT_SCOPE)
endfunction()

# A clip in both kinds of frames.
function(add_clip codec width height)
    set(h264 -c:v libx264 -preset superfast -profile:v main -crf 29 -x264-params
             keyint=infinite:scenecut=0:bframes=0:ref=1:weightp=0:rc-lookahead=0:mbtree=0:threads=1:stitchable=1)
    # Motion vectors of the picture before may not be looked at: it may have been a key frame instead.
    set(h265 -c:v libx265 -preset ultrafast -x265-params
             "keyint=-1:scenecut=0:bframes=0:ref=1:weightp=0:rc-lookahead=0:crf=32:temporal-mvp=0:wpp=0:pools=none:\
frame-threads=1:repeat-headers=1:info=0:open-gop=0:log-level=error")
    set(drop_h264 -bsf:v filter_units=remove_types=6)
    set(drop_h265 -bsf:v filter_units=remove_types=39)
    set(name ${codec}-${width}x${height})
    math(EXPR last "${TESSARO_CLIP_PICTURES} - 1")
    math(EXPR one_more "${TESSARO_CLIP_PICTURES} + 1")
    math(EXPR twice "${TESSARO_CLIP_PICTURES} * 2")
    string(REPLACE h265 hevc format ${codec})
    picture_graph(keys ${width} ${height} "ceil(n/2)")
    picture_graph(deltas ${width} ${height} "n+${last}")
    add_clip_file(${name}.key -filter_complex "${keys}" ${${codec}} -forced-idr 1
                  -force_key_frames "expr:eq(mod(n,2),0)" ${drop_${codec}} -frames:v ${twice} -f ${format})
    add_clip_file(${name}.delta -filter_complex "${deltas}" ${${codec}} ${drop_${codec}} -frames:v ${one_more}
                  -f ${format})
    set(clip_files ${clip_files} PARENT_SCOPE)
endfunction()

add_clip(h264 1920 1080)
add_clip(h264 1280 720)
add_clip(h264 640 360)
add_clip(h264 320 180)
add_clip(h265 1280 720)
add_clip(h265 640 360)

# The same pictures for snapshots, each one a JPEG file.
picture_graph(pictures 1280 720 n)
add_clip_file(pictures.mjpeg -filter_complex "${pictures},format=yuvj420p" -c:v mjpeg -q:v 6 -threads 1 -frames:v
              ${TESSARO_CLIP_PICTURES} -f mjpeg)

# Six seconds of sound: a chord whose notes all go a whole number of times into it.
foreach(law alaw mulaw)
    add_clip_file(sound.${law} -f lavfi -i
                  "aevalsrc='0.2*sin(2*PI*220*t)+0.15*sin(2*PI*330*t)*(0.5-0.5*cos(2*PI*t/3))':s=8000:d=6" -c:a
                  pcm_${law} -f ${law})
endforeach()

add_custom_target(device_clips ALL DEPENDS ${clip_files})

# They are the same for every machine. The plug-ins look for them beside themselves.
install(FILES ${clip_files} DESTINATION ${CMAKE_INSTALL_DATADIR}/tessaro/device-media)
file(RELATIVE_PATH clips_from_plugins /${TESSARO_PLUGIN_DIR} /${CMAKE_INSTALL_DATADIR}/tessaro/device-media)
file(CREATE_LINK ${clips_from_plugins} ${CMAKE_CURRENT_BINARY_DIR}/device-media SYMBOLIC)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/device-media DESTINATION ${TESSARO_PLUGIN_DIR})
