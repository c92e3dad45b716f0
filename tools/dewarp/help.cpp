#include "options.h"

namespace dewarp_tool {

const char* HelpText() {
  return R"HELP(dewarp - turn a fisheye picture or video into the flat views an operator watches

Usage:
  dewarp [options] INPUT OUTPUT        dewarp a picture or a video
  dewarp [options] --sample OUTPUT     dewarp the built-in sample picture
  dewarp [options] --click X,Y INPUT   print the PTZ position of an output pixel
  dewarp --demo [--out-dir DIR]        every view kind of the sample, and a contact sheet
  dewarp --help

Files:
  INPUT    a PNG or JPEG picture, or a YUV4MPEG2 video (8-bit 4:2:0); "-" reads standard
           input. The kind is recognised from the first bytes, not the name. The fisheye
           circle is taken to fill the picture; width and height must be even.
  OUTPUT   .png or .jpg/.jpeg: a picture; .y4m: a YUV4MPEG2 video; "-": YUV4MPEG2 on
           standard output. A video written as pictures needs a numbered name such as
           frame%04d.png (otherwise only the first frame is written). An output file
           appears only when it is complete.

View:
  --view KIND           panoramic (default), dual-panoramic, quad-panoramic,
                        ptz, dual-ptz, quad-ptz
  --projection NAME     rectilinear, cylindrical, equirectangular, mercator, lambert,
                        miller, pannini, architectural, equirectangular-pannini
                        (default: cylindrical for panoramic views, rectilinear for PTZ;
                        the engine substitutes a projection a view cannot show)
  --mount WHERE         ceiling (default), floor, wall, inverted-wall
  --size WxH            output size, even numbers (default: the input's width; panoramic
                        views keep the projection's proportions, PTZ views are 4:3)
  --interpolation HOW   bilinear (default; also "linear") or nearest
  --aspect HOW          scale, crop or free (default: scale for panoramic, free for PTZ)
  --ptz P,T[,R[,Z]]     pan, tilt and roll in degrees and zoom factor (1 = widest); the
                        engine limits the position to what the view allows
  --fov DEGREES         the lens's field of view (default 183, the built-in camera)

Pointing:
  --click X,Y           print the PTZ position (pan,tilt,roll,zoom, the form --ptz takes)
                        that dewarp_calc_ptz_position gives for the output pixel X,Y of the
                        view chosen by the other options; with --raw, X,Y is a pixel of the
                        fisheye picture itself. The answer is the engine's reading of the
                        fisheye point under the pixel, in the lens's own angles (rows counted
                        from the top); fed back with --ptz it aims a PTZ view at the point on a
                        wall mount once the tilt's sign is turned, not on other mounts
  --max-zoom Z          the largest zoom --click may answer (default 4)

Plug-in:
  --kind NAME           drive the plug-in instead of the engine, as a host does: the
                        registry finds the dewarper kind NAME (for example Kestrel),
                        CreateDewarper makes one with the mount as its Position (ceiling 1,
                        floor 2, wall 0) and every frame goes through its buffers
  --sub-mode N          the dewarper's sub-mode: 1 PTZ view (default), 2 panoramic,
                        3 dual panoramic; --ptz gives pan, tilt and zoom in sub-mode 1

Other:
  --sample              use the built-in sample as the input: a room with a tiled floor,
                        coloured walls labelled NORTH, EAST, SOUTH, WEST and straight grid
                        lines, seen by the built-in camera from the chosen --mount
  --sample-size N       its size in pixels (default 1936, the built-in camera's)
  --raw                 write the input unchanged (convert files, save the sample)
  --frames N            stop after N frames of a video
  --quality Q           JPEG quality, 1 to 100 (default 90)
  --log LEVEL           engine log lines on standard error from this level on: error
                        (default), warning, info, debug, trace
  --quiet, -q           no summary and no progress line
  --out-dir DIR         where --demo writes (default out/demo)

A video shows its progress (frames done, frames per second) on standard error when that is
a terminal. Exit status: 0 done; 1 the engine or plug-in refused; 2 bad command line or
input (unreadable or truncated file, unsupported pixel format, odd size, unknown value).

Examples:
  dewarp --demo
  dewarp --sample --raw sample.png                     save the sample fisheye picture
  dewarp fisheye.jpg panorama.png                      ceiling camera, panoramic strip
  dewarp --mount wall --view ptz --ptz 30,-10,0,2 fisheye.png door.jpg
  dewarp --view quad-ptz --ptz 0,-40 --size 1280x960 fisheye.png quad.png
  dewarp --view dual-panoramic --projection equirectangular fisheye.png dual.png
  dewarp --click 480,200 --size 960x540 fisheye.png    PTZ position of a panorama pixel
  ffmpeg -i fisheye.mp4 -f yuv4mpegpipe -pix_fmt yuv420p - | dewarp --size 1280x480 - out.y4m
  ffmpeg -i fisheye.mp4 -f yuv4mpegpipe - | dewarp --view ptz - - | ffplay -
  dewarp --kind Kestrel --sub-mode 2 --mount ceiling fisheye.png plugin.png
)HELP";
}

}  // namespace dewarp_tool
