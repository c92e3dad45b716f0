#!/usr/bin/env python3
"""End-to-end tests of the dewarp tool: the built program on small generated inputs.

Inputs come from ffmpeg's test source, from pictures this script writes itself, and from the
tool's own sample scene (whose content is known from the room's layout). Outputs are checked with
ffprobe and by decoding them with ffmpeg, independently of the tool's own readers.

Run one test:  DEWARP_TOOL=build/x86_64/bin/dewarp python3 tests/tools/test_dewarp_cli.py DewarpCli.test_help
"""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

TOOL = os.environ.get("DEWARP_TOOL", "build/x86_64/bin/dewarp")
TMP_ROOT = os.environ.get("DEWARP_TEST_TMP")

VIEWS = ["panoramic", "dual-panoramic", "quad-panoramic", "ptz", "dual-ptz", "quad-ptz"]
PROJECTIONS = ["rectilinear", "cylindrical", "equirectangular", "mercator", "lambert", "miller",
               "pannini", "architectural", "equirectangular-pannini"]


def run(args, stdin=None, input_bytes=None):
    """Runs the tool; returns (exit status, stdout bytes, stderr text)."""
    proc = subprocess.run([TOOL] + args, stdin=stdin, input=input_bytes, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=240)
    return proc.returncode, proc.stdout, proc.stderr.decode("utf-8", "replace")


def write_png(path, width, height, pixel):
    """A plain 8-bit RGB PNG; pixel(x, y) gives (r, g, b)."""
    raw = bytearray()
    for y in range(height):
        raw.append(0)
        for x in range(width):
            raw.extend(pixel(x, y))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n")
        f.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        f.write(chunk(b"IDAT", zlib.compress(bytes(raw))))
        f.write(chunk(b"IEND", b""))


def read_y4m(data):
    """Parses a YUV4MPEG2 stream: (header fields, [(y, u, v) planes per frame])."""
    end = data.index(b"\n")
    fields = data[:end].decode().split()
    assert fields[0] == "YUV4MPEG2", fields
    tags = {f[0]: f[1:] for f in fields[1:]}
    w, h = int(tags["W"]), int(tags["H"])
    size = w * h * 3 // 2
    frames = []
    pos = end + 1
    while pos < len(data):
        line_end = data.index(b"\n", pos)
        assert data[pos:pos + 5] == b"FRAME"
        pos = line_end + 1
        frame = data[pos:pos + size]
        assert len(frame) == size, "short frame"
        frames.append((frame[:w * h], frame[w * h:w * h + size // 6], frame[w * h + size // 6:]))
        pos += size
    return tags, w, h, frames


def ffprobe(path_or_dash, stdin_bytes=None, count=False):
    """ffprobe's view of the first video stream: dict of codec_name, width, height, nb_read_frames."""
    args = ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
            "stream=codec_name,width,height,pix_fmt" + (",nb_read_frames" if count else ""),
            "-of", "default=noprint_wrappers=1"]
    if count:
        args.append("-count_frames")
    proc = subprocess.run(args + [path_or_dash], input=stdin_bytes, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=120)
    if proc.returncode != 0:
        raise AssertionError("ffprobe failed: " + proc.stderr.decode())
    return dict(line.split("=", 1) for line in proc.stdout.decode().split("\n") if "=" in line)


def decode_rgb(path):
    """Decodes a picture with ffmpeg into (width, height, rgb bytes)."""
    info = ffprobe(path)
    w, h = int(info["width"]), int(info["height"])
    proc = subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    assert proc.returncode == 0, proc.stderr.decode()
    assert len(proc.stdout) == w * h * 3
    return w, h, proc.stdout


def ffmpeg(args):
    proc = subprocess.run(["ffmpeg", "-v", "error", "-y"] + args, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=120)
    assert proc.returncode == 0, proc.stderr.decode()
    return proc.stdout


def chroma_at(tags_w_h_frames, x, y, frame=0):
    _, w, _, frames = tags_w_h_frames
    yp, up, vp = frames[frame]
    return yp[y * w + x], up[(y // 2) * (w // 2) + x // 2], vp[(y // 2) * (w // 2) + x // 2]


def centroid(frame_planes, w, h, predicate):
    """Centre of the pixels whose (Y, U, V) satisfy predicate, or None."""
    yp, up, vp = frame_planes
    sx = sy = n = 0
    for y in range(h):
        for x in range(w):
            c = (y // 2) * (w // 2) + x // 2
            if predicate(yp[y * w + x], up[c], vp[c]):
                sx += x
                sy += y
                n += 1
    return (sx / n, sy / n, n) if n else None


def is_red(y, u, v):
    # Pure red is Y 81, U 90, V 240 in BT.601 limited range.
    return v > 200 and u < 120


class DewarpCli(unittest.TestCase):
    def setUp(self):
        base = TMP_ROOT
        if base:
            os.makedirs(base, exist_ok=True)
        self.dir = tempfile.mkdtemp(prefix="dewarp-cli-", dir=base)

    def tearDown(self):
        shutil.rmtree(self.dir, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.dir, name)

    def sample(self, name, mount, size=256):
        path = self.path(name)
        rc, _, err = run(["-q", "--sample", "--sample-size", str(size), "--mount", mount, "--raw", path])
        self.assertEqual(0, rc, err)
        return path

    def marker_picture(self, name, mx, my, size=256):
        """A grey fisheye picture with a red 5x5 marker centred on (mx, my)."""
        path = self.path(name)
        write_png(path, size, size,
                  lambda x, y: (255, 0, 0) if abs(x - mx) <= 2 and abs(y - my) <= 2 else (120, 120, 120))
        return path

    def assert_bad_input(self, args, words, leftovers=(), input_bytes=None):
        """Exit status 2, one line on stderr containing `words`, and none of `leftovers` exists."""
        before = set(os.listdir(self.dir))
        rc, _, err = run(args, input_bytes=input_bytes)
        self.assertEqual(2, rc, err)
        lines = err.strip().split("\n")
        self.assertEqual(1, len(lines), err)
        self.assertTrue(lines[0].startswith("dewarp: "), err)
        self.assertIn(words, lines[0])
        for name in leftovers:
            self.assertFalse(os.path.exists(self.path(name)), name + " left behind")
        self.assertEqual(before, set(os.listdir(self.dir)), "files appeared: no partial output may stay")

    # ---- help ---------------------------------------------------------------------------------

    def test_help_documents_every_option(self):
        rc, out, _ = run(["--help"])
        self.assertEqual(0, rc)
        text = out.decode()
        for option in ["--view", "--projection", "--mount", "--size", "--interpolation", "--aspect", "--ptz",
                       "--log", "--click", "--max-zoom", "--kind", "--sub-mode", "--sample", "--raw", "--demo",
                       "--frames", "--quality", "--quiet", "--fov", "--out-dir", "Examples:", "yuv4mpegpipe"]:
            self.assertIn(option, text)
        for value in VIEWS + PROJECTIONS + ["ceiling", "floor", "wall", "inverted-wall", "nearest", "bilinear",
                                            "scale", "crop", "free", "warning", "info", "debug", "trace"]:
            self.assertIn(value, text)

    # ---- formats ------------------------------------------------------------------------------

    def check_outputs_of(self, source):
        """Dewarps `source` into PNG, JPEG and YUV4MPEG2 at 320x120 and checks each with ffprobe."""
        for name, codec in [("out.png", "png"), ("out.jpg", "mjpeg"), ("out.y4m", "rawvideo")]:
            target = self.path(name)
            rc, _, err = run(["-q", "--size", "320x120", source, target])
            self.assertEqual(0, rc, err)
            info = ffprobe(target)
            self.assertEqual(codec, info["codec_name"], name)
            self.assertEqual(("320", "120"), (info["width"], info["height"]), name)
            os.remove(target)
        rc, out, err = run(["-q", "--size", "320x120", source, "-"])
        self.assertEqual(0, rc, err)
        tags, w, h, frames = read_y4m(out)
        self.assertEqual((320, 120, 1), (w, h, len(frames)))

    def test_png_input(self):
        source = self.path("in.png")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=256x256", "-frames:v", "1", source])
        self.check_outputs_of(source)

    def test_jpeg_input(self):
        source = self.path("in.jpg")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=256x256", "-frames:v", "1", source])
        self.check_outputs_of(source)

    def test_y4m_input(self):
        source = self.path("in.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=256x256", "-frames:v", "1", "-pix_fmt", "yuv420p", source])
        self.check_outputs_of(source)

    def test_raw_keeps_picture_colours(self):
        source = self.path("in.png")
        write_png(source, 16, 8, lambda x, y: (x * 16, y * 32, 200))
        target = self.path("copy.png")
        rc, _, err = run(["-q", "--raw", source, target])
        self.assertEqual(0, rc, err)
        w, h, rgb = decode_rgb(target)
        self.assertEqual((16, 8), (w, h))
        self.assertEqual(bytes([5 * 16, 3 * 32, 200]), rgb[(3 * 16 + 5) * 3:(3 * 16 + 5) * 3 + 3])

    def test_raw_picture_to_y4m_uses_bt601_limited_range(self):
        source = self.path("red.png")
        write_png(source, 4, 4, lambda x, y: (255, 0, 0))
        rc, out, err = run(["-q", "--raw", source, "-"])
        self.assertEqual(0, rc, err)
        parsed = read_y4m(out)
        self.assertEqual((81, 90, 240), chroma_at(parsed, 1, 1))

    def test_video_to_numbered_pictures(self):
        source = self.path("clip.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=128x128:rate=5", "-frames:v", "3", "-pix_fmt", "yuv420p",
                source])
        rc, _, err = run(["-q", "--size", "64x32", source, self.path("frame%02d.png")])
        self.assertEqual(0, rc, err)
        self.assertEqual(["frame01.png", "frame02.png", "frame03.png"],
                         sorted(n for n in os.listdir(self.dir) if n.startswith("frame")))

    def test_frames_limits_the_video(self):
        source = self.path("clip.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=128x128:rate=5", "-frames:v", "4", "-pix_fmt", "yuv420p",
                source])
        rc, out, err = run(["-q", "--frames", "2", "--size", "64x32", source, "-"])
        self.assertEqual(0, rc, err)
        self.assertEqual(2, len(read_y4m(out)[3]))

    # ---- the ffmpeg pipe ----------------------------------------------------------------------

    def test_ffmpeg_pipe(self):
        producer = subprocess.Popen(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=256x256:rate=10",
                                     "-frames:v", "6", "-pix_fmt", "yuv420p", "-f", "yuv4mpegpipe", "-"],
                                    stdout=subprocess.PIPE)
        target = self.path("piped.y4m")
        rc, _, err = run(["-q", "--view", "quad-panoramic", "--size", "320x240", "-", target], stdin=producer.stdout)
        producer.stdout.close()
        self.assertEqual(0, producer.wait())
        self.assertEqual(0, rc, err)
        info = ffprobe(target, count=True)
        self.assertEqual(("rawvideo", "320", "240", "6"),
                         (info["codec_name"], info["width"], info["height"], info["nb_read_frames"]))
        # Standard output into ffprobe's standard input, with the frame rate carried through.
        with open(target, "rb") as f:
            data = f.read()
        rc, out, err = run(["-q", "--raw", "-", "-"], input_bytes=data)
        self.assertEqual(0, rc, err)
        self.assertIn(b" F10:1 ", out[:80])
        info = ffprobe("-", stdin_bytes=out, count=True)
        self.assertEqual(("320", "240", "6", "yuv420p"),
                         (info["width"], info["height"], info["nb_read_frames"], info["pix_fmt"]))

    def test_progress_on_a_terminal_only(self):
        source = self.path("clip.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=128x128:rate=10", "-frames:v", "12", "-pix_fmt", "yuv420p",
                source])
        # Standard error is a terminal: frames done and frames per second are shown.
        master, slave = os.openpty()
        proc = subprocess.run([TOOL, "--size", "64x32", source, self.path("a.y4m")], stdout=subprocess.PIPE,
                              stderr=slave, timeout=120)
        os.close(slave)
        shown = b""
        try:
            while True:
                chunk = os.read(master, 4096)
                if not chunk:
                    break
                shown += chunk
        except OSError:
            pass
        os.close(master)
        self.assertEqual(0, proc.returncode)
        self.assertRegex(shown.decode(), r"12 frames, [0-9.]+ fps")
        # Not a terminal: only the closing summary.
        rc, _, err = run(["--size", "64x32", source, self.path("b.y4m")])
        self.assertEqual(0, rc)
        self.assertNotIn("fps", err)
        self.assertIn("12 frames in", err)

    # ---- views --------------------------------------------------------------------------------

    def test_every_view_kind_on_ceiling_and_wall(self):
        for mount in ["ceiling", "wall"]:
            source = self.sample("room-%s.png" % mount, mount)
            for view in VIEWS:
                # Free aspect: the view fills the whole output, whatever its natural proportions.
                rc, out, err = run(["-q", "--mount", mount, "--view", view, "--aspect", "free", "--size", "192x128",
                                    source, "-"])
                self.assertEqual(0, rc, "%s %s: %s" % (mount, view, err))
                _, w, h, frames = read_y4m(out)
                self.assertEqual((192, 128), (w, h))
                luma = frames[0][0]
                # The room fills the view: most pixels are picture, not the black outside the circle.
                self.assertGreater(sum(1 for v in luma if v > 40), len(luma) * 0.6, "%s %s" % (mount, view))

    def test_wall_ptz_view_looks_at_the_blue_north_wall(self):
        # The sample's wall camera hangs on the south wall looking north; the north wall is blue.
        source = self.sample("wall.png", "wall")
        rc, out, err = run(["-q", "--mount", "wall", "--view", "ptz", "--ptz", "0,0,0,2", "--size", "64x48", source,
                            "-"])
        self.assertEqual(0, rc, err)
        y, u, v = chroma_at(read_y4m(out), 32, 16)
        self.assertGreater(u, 140, "blue has a high Cb")
        self.assertLess(v, 128)

    def test_ceiling_panorama_shows_all_four_walls(self):
        source = self.sample("ceiling.png", "ceiling")
        rc, out, err = run(["-q", "--mount", "ceiling", "--size", "256x96", source, "-"])
        self.assertEqual(0, rc, err)
        _, w, h, frames = read_y4m(out)
        yp, up, vp = frames[0]
        colours = set()
        for cy in range(h // 2):
            for cx in range(w // 2):
                u, v = up[cy * (w // 2) + cx], vp[cy * (w // 2) + cx]
                if u > 150 and v < 120:
                    colours.add("blue")
                elif u < 110 and v < 110:
                    colours.add("green")
                elif v > 170 and u < 120:
                    colours.add("red")
                elif u < 90 and v > 130:
                    colours.add("yellow")
        self.assertEqual({"blue", "green", "red", "yellow"}, colours)

    def lowest_blue_rows(self, mount, ptz):
        """For each chroma column of a PTZ view of the sample, the lowest chroma row that is blue (the
        north wall just above its skirting board), or None where the column shows no blue."""
        source = self.sample("room-%s.png" % mount, mount, size=512)
        rc, out, err = run(["-q", "--mount", mount, "--view", "ptz", "--ptz", ptz, "--size", "256x192", source, "-"])
        self.assertEqual(0, rc, err)
        _, w, h, frames = read_y4m(out)
        _, up, vp = frames[0]
        cw, ch = w // 2, h // 2
        rows = []
        for cx in range(cw):
            lowest = None
            for cy in range(ch):
                if up[cy * cw + cx] > 145 and vp[cy * cw + cx] < 120:
                    lowest = cy
            rows.append(lowest)
        return rows

    def assert_straight(self, points, what):
        """Least-squares line through (x, y) points; every point within 1.5 chroma pixels of it."""
        self.assertGreater(len(points), 20, what + ": too little of the edge is visible")
        n = len(points)
        mx = sum(p[0] for p in points) / n
        my = sum(p[1] for p in points) / n
        sxx = sum((p[0] - mx) ** 2 for p in points)
        slope = sum((p[0] - mx) * (p[1] - my) for p in points) / sxx
        worst = max(abs(p[1] - (my + slope * (p[0] - mx))) for p in points)
        self.assertLess(worst, 1.5, "%s: the edge bends by %.1f chroma pixels" % (what, worst))
        return slope

    def test_straight_lines_stay_straight_in_a_ptz_view(self):
        # The bottom edge of the north wall is a straight line in the room; a perspective view
        # must show it straight, level when looking straight at the wall, slanted when panned.
        for ptz, level in [("0,0,0,1", True), ("25,-10,0,1.5", False)]:
            rows = self.lowest_blue_rows("wall", ptz)
            # Columns where the edge is inside the picture (not cut by the bottom border).
            points = [(x, y) for x, y in enumerate(rows) if y is not None and 2 < y < 94]
            slope = self.assert_straight(points, "wall mount at " + ptz)
            if level:
                self.assertLess(abs(slope), 0.02)
            else:
                self.assertGreater(abs(slope), 0.02)

    def test_every_projection_is_accepted(self):
        # A projection a view cannot show is replaced by the engine, never refused.
        for mount in ["wall", "ceiling"]:
            source = self.sample("%s.png" % mount, mount)
            for projection in PROJECTIONS:
                for view in ["panoramic", "ptz"]:
                    rc, out, err = run(["-q", "--mount", mount, "--view", view, "--projection", projection,
                                        "--size", "96x64", source, "-"])
                    self.assertEqual(0, rc, "%s %s %s: %s" % (mount, view, projection, err))
                    self.assertEqual((96, 64), read_y4m(out)[1:3])

    def test_options_reach_the_engine(self):
        source = self.sample("wall.png", "wall")
        outputs = {}
        for name, extra in [("base", []), ("nearest", ["--interpolation", "nearest"]),
                            ("crop", ["--aspect", "crop"]), ("panned", ["--ptz", "40,10,0,1.5"])]:
            rc, out, err = run(["-q", "--mount", "wall", "--view", "ptz", "--size", "96x64", source, "-"] + extra)
            self.assertEqual(0, rc, err)
            outputs[name] = out
        for name in ["nearest", "panned"]:
            self.assertNotEqual(outputs["base"], outputs[name], name + " changed nothing")

    def test_log_lines_go_to_standard_error(self):
        source = self.sample("wall.png", "wall")
        rc, out, err = run(["--log", "info", "--mount", "wall", "--size", "96x64", source, "-"])
        self.assertEqual(0, rc, err)
        self.assertIn("LIBDEWARP", err)
        self.assertIn("Camera type is circular fish eye", err)
        self.assertTrue(out.startswith(b"YUV4MPEG2 "), "log lines must not reach the video")

    # ---- click to PTZ -------------------------------------------------------------------------

    def ptz_of_click(self, args):
        rc, out, err = run(["-q"] + args)
        self.assertEqual(0, rc, err)
        text = out.decode().strip()
        values = [float(v) for v in text.split(",")]
        self.assertEqual(4, len(values), text)
        return text, values

    def marker_at_centre_of_ptz(self, source, mount, ptz):
        # Where the view points is the question: pan, tilt and roll as clicked, zoomed in (x3) so
        # that the small marker covers several output pixels.
        pan, tilt, roll = ptz.split(",")[:3]
        ptz = "%s,%s,%s,3" % (pan, tilt, roll)
        rc, out, err = run(["-q", "--mount", mount, "--view", "ptz", "--ptz", ptz, "--size", "64x48", source, "-"])
        self.assertEqual(0, rc, err)
        _, w, h, frames = read_y4m(out)
        return centroid(frames[0], w, h, is_red)

    @staticmethod
    def with_tilt_negated(text):
        # The engine's clicked-point conversion reads wall-mount rows from the top, so the tilt it
        # reports for a point is the opposite of the tilt that aims a PTZ view at that point. Inside
        # the disc the conversion measures from the picture's corner (as this marker is), the pan is
        # the one that aims the view. Ceiling and floor mounts follow other conventions and are not
        # round-tripped here.
        pan, tilt, roll, zoom = text.split(",")
        return ",".join([pan, "%g" % -float(tilt), roll, zoom])

    def test_click_on_the_fisheye_round_trip(self):
        # A marker at a fisheye pixel; --raw --click gives the PTZ position of that pixel; the PTZ
        # view at that position (tilt sign turned) must show the marker in its centre.
        mount = "wall"
        source = self.marker_picture("marker-%s.png" % mount, 80, 70)
        text, values = self.ptz_of_click(["--mount", mount, "--raw", "--click", "80,70", "--max-zoom", "2",
                                          source])
        self.assertLessEqual(values[3], 2.0)
        aim = self.with_tilt_negated(text)
        found = self.marker_at_centre_of_ptz(source, mount, aim)
        self.assertIsNotNone(found, "%s: marker not in the PTZ view at %s" % (mount, aim))
        self.assertLess(abs(found[0] - 31.5), 4, "%s: %s -> %s" % (mount, aim, found))
        self.assertLess(abs(found[1] - 23.5), 4, "%s: %s -> %s" % (mount, aim, found))

    def test_click_on_the_panorama_round_trip(self):
        # The marker as the panorama shows it; clicking there must point the PTZ view at it.
        mount = "wall"
        source = self.marker_picture("marker.png", 80, 70)
        rc, out, err = run(["-q", "--mount", mount, "--size", "256x160", source, "-"])
        self.assertEqual(0, rc, err)
        _, w, h, frames = read_y4m(out)
        found = centroid(frames[0], w, h, is_red)
        self.assertIsNotNone(found, "marker not in the panorama")
        click = "%d,%d" % (round(found[0]), round(found[1]))
        text, _ = self.ptz_of_click(["--mount", mount, "--size", "256x160", "--click", click, source])
        aim = self.with_tilt_negated(text)
        found = self.marker_at_centre_of_ptz(source, mount, aim)
        self.assertIsNotNone(found, "marker not in the PTZ view at " + aim)
        self.assertLess(abs(found[0] - 31.5), 5, aim)
        self.assertLess(abs(found[1] - 23.5), 5, aim)

    def test_click_outside_the_picture_is_refused(self):
        source = self.sample("wall.png", "wall")
        self.assert_bad_input(["--size", "96x64", "--click", "96,10", source], "lies outside the 96x64 output")

    # ---- the plug-in --------------------------------------------------------------------------

    def test_plugin_kestrel_sub_modes(self):
        source = self.sample("ceiling.png", "ceiling")
        # Sub-mode 1 never outputs more than half the input: 256x192 asked of a 256x256 input
        # becomes 128x96 (the proportions kept).
        rc, out, err = run(["-q", "--kind", "Kestrel", "--sub-mode", "1", "--mount", "ceiling", "--size", "256x192",
                            source, "-"])
        self.assertEqual(0, rc, err)
        self.assertEqual((128, 96), read_y4m(out)[1:3])
        for sub_mode in ["2", "3"]:
            rc, out, err = run(["-q", "--kind", "Kestrel", "--sub-mode", sub_mode, "--mount", "ceiling", "--size",
                                "256x96", source, "-"])
            self.assertEqual(0, rc, err)
            _, w, h, frames = read_y4m(out)
            self.assertEqual((256, 96), (w, h), "sub-mode " + sub_mode)
            self.assertGreater(sum(1 for v in frames[0][0] if v > 40), w * h * 0.6)

    def test_plugin_sentry360_panorama_is_half_the_input(self):
        source = self.sample("ceiling.png", "ceiling")
        rc, out, err = run(["-q", "--kind", "Sentry360", "--sub-mode", "2", "--mount", "ceiling", source, "-"])
        self.assertEqual(0, rc, err)
        self.assertEqual((128, 128), read_y4m(out)[1:3])

    def test_plugin_unknown_kind_and_sub_mode(self):
        source = self.sample("ceiling.png", "ceiling")
        self.assert_bad_input(["--kind", "Fisheye3000", source, self.path("x.png")], "unknown --kind value",
                              ["x.png"])
        self.assert_bad_input(["--kind", "Kestrel", "--sub-mode", "7", source, self.path("x.png")],
                              "--sub-mode 7 is not offered", ["x.png"])

    # ---- bad input ----------------------------------------------------------------------------

    def test_missing_file(self):
        self.assert_bad_input([self.path("nothing.png"), self.path("out.png")], "cannot open", ["out.png"])

    def test_not_a_picture(self):
        with open(self.path("notes.png"), "w") as f:
            f.write("just some text\n")
        self.assert_bad_input([self.path("notes.png"), self.path("out.png")], "not a PNG, JPEG or YUV4MPEG2 file",
                              ["out.png"])

    def test_empty_input(self):
        open(self.path("empty.png"), "w").close()
        self.assert_bad_input([self.path("empty.png"), self.path("out.png")], "empty input", ["out.png"])

    def test_truncated_png(self):
        source = self.sample("room.png", "wall")
        with open(source, "rb") as f:
            data = f.read()
        with open(source, "wb") as f:
            f.write(data[:len(data) // 2])
        self.assert_bad_input([source, self.path("out.png")], "truncated", ["out.png"])

    def test_truncated_jpeg(self):
        source = self.path("in.jpg")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=256x256", "-frames:v", "1", source])
        with open(source, "rb") as f:
            data = f.read()
        with open(source, "wb") as f:
            f.write(data[:len(data) // 2])
        self.assert_bad_input([source, self.path("out.jpg")], "truncated", ["out.jpg"])

    def test_truncated_video_leaves_no_output(self):
        source = self.path("clip.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=128x128:rate=5", "-frames:v", "3", "-pix_fmt", "yuv420p",
                source])
        with open(source, "rb") as f:
            data = f.read()
        with open(source, "wb") as f:
            f.write(data[:-1000])
        self.assert_bad_input([source, self.path("out.y4m")], "truncated: frame 3", ["out.y4m"])

    def test_unsupported_pixel_format(self):
        source = self.path("clip444.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=128x128", "-frames:v", "1", "-pix_fmt", "yuv444p", "-strict",
                "-1", source])
        self.assert_bad_input([source, self.path("out.y4m")], "unsupported pixel format C444", ["out.y4m"])

    def test_odd_sizes(self):
        odd = self.path("odd.png")
        write_png(odd, 255, 256, lambda x, y: (10, 20, 30))
        self.assert_bad_input([odd, self.path("out.png")], "odd picture size 255x256", ["out.png"])
        clip = self.path("odd.y4m")
        ffmpeg(["-f", "lavfi", "-i", "testsrc=size=129x128", "-frames:v", "1", "-pix_fmt", "yuv420p", clip])
        self.assert_bad_input([clip, self.path("out.y4m")], "odd frame size 129x128", ["out.y4m"])
        source = self.sample("room.png", "wall")
        self.assert_bad_input(["--size", "641x480", source, self.path("out.png")], "odd --size 641x480",
                              ["out.png"])

    def test_unknown_option_values(self):
        source = self.sample("room.png", "wall")
        target = self.path("out.png")
        for option, value in [("--view", "fisheye"), ("--projection", "stereographic"), ("--mount", "roof"),
                              ("--interpolation", "cubicle"), ("--aspect", "stretch"), ("--log", "loud")]:
            self.assert_bad_input([option, value, source, target], "unknown %s value '%s'" % (option, value),
                                  ["out.png"])
        self.assert_bad_input(["--bogus", source, target], "unknown option --bogus", ["out.png"])
        self.assert_bad_input(["--ptz", "north", source, target], "bad --ptz value 'north'", ["out.png"])
        self.assert_bad_input(["--size", "big", source, target], "bad --size value 'big'", ["out.png"])
        self.assert_bad_input([source, self.path("out.gif")], "cannot tell the output format", ["out.gif"])
        self.assert_bad_input([source], "expected INPUT OUTPUT")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[1:], verbosity=2)
