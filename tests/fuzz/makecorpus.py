#!/usr/bin/env python3
"""Writes the seed inputs of the fuzz targets below tests/fuzz/corpus: small streams of every encoding, headers with
every oddity that is met in the field, tiny videos, settings and typed times."""

import pathlib
import struct

corpus = pathlib.Path(__file__).resolve().parent / "corpus"


def words(encoding, values):
    if encoding == 3:
        return b"".join(struct.pack("<H", v) for v in values)
    if encoding == 0:
        return b"".join(struct.pack("<I", v) for v in values)
    little = b"".join(struct.pack("<Q", v) for v in values)
    if encoding == 1:
        return little
    return b"".join(little[i + 4:i + 8] + little[i:i + 4] for i in range(0, len(little), 8))


def high(v):
    return 0x80000000 | v


def cd(p, t, x, y):
    return p << 28 | t << 22 | x << 11 | y


def trigger(t, channel, edge):
    return 0xA0000000 | t << 22 | channel << 8 | edge


def wide(word, mask=0):
    return word << 32 | mask


evt2 = {
    "events": [high(16)] + [cd(i % 2, i % 64, 5 * i, 3 * i) for i in range(20)],
    "wrap": [high(0xFFFFFFF), cd(1, 63, 1, 1), high(0), cd(1, 0, 2, 2)],
    "steps": [high(1000), cd(1, 5, 1, 1), high(999), cd(0, 5, 1, 1), high(50), trigger(3, 31, 1), cd(1, 0, 1, 1)],
    "open_step": [high(0), high(100), high(200), cd(1, 0, 1, 1), high(43), cd(1, 48, 1, 1), cd(1, 49, 1, 1)],
    "wild": [high(5000), cd(1, 5, 1, 1), high(90000), cd(1, 6, 1, 1), high(5001), high(8), high(5001), cd(0, 1, 2, 3)],
    "monitoring": [high(1), 0xE0000014, 0xF0000123, 0x90000000, trigger(1, 0, 0), cd(1, 2, 2047, 2047)],
    "midstream": [cd(1, 2, 3, 4), trigger(1, 1, 1), high(7), cd(1, 2, 3, 4)],
}
evt21 = {
    "masks": [wide(high(1)), wide(cd(1, 3, 32, 7), 0x80000001), wide(cd(0, 5, 300, 200), 0xFFFFFFFF)],
    "edge": [wide(high(1)), wide(cd(1, 3, 1270, 719), 0xFFFFFFFF), wide(cd(1, 3, 1, 720), 1), wide(cd(1, 4, 0, 0))],
    "steps": [wide(high(900)), wide(cd(1, 60, 0, 0), 3), wide(high(899)), wide(cd(1, 6, 0, 0), 3), wide(high(5)),
              wide(cd(1, 6, 0, 0), 3), wide(trigger(3, 5, 1)), wide(0xE0000014, 0xF0000001)],
}
evt3 = {
    "events": [0x8005, 0x6064, 0x0007, 0x292C, 0x212D, 0x8006, 0x212C, 0x3860, 0x4005, 0x4801, 0x5080],
    "vectors": [0x8000, 0x0001, 0x3840, 0x4000, 0x4000, 0x5000, 0x4001, 0x4000, 0x5001, 0x5FFF, 0x2800, 0x4FFF],
    "hidden": [0x8000, 0x0007, 0x2801, 0x1009, 0x2802, 0x3864, 0x4001, 0x5001, 0x0008, 0x2004, 0x4001, 0x5001],
    "glitch": [0x8001, 0x0000, 0x6064, 0x2800, 0x606F, 0x6064, 0x2801, 0x9999, 0xE019, 0xFFFF, 0xF123, 0x7001],
    "steps": [0x8003, 0x0001, 0x6710, 0x2801, 0x8001, 0x6000, 0x2801, 0x8FFF, 0x2801, 0x8001, 0xA601, 0x8002, 0x2801],
    "wrap": [0x8FFF, 0x0001, 0x6FFF, 0x2801, 0x8000, 0x2802, 0xA000, 0x8BB8, 0x2801, 0x83B9, 0x2801],
    "midstream": [0x0007, 0x3864, 0x4001, 0x2801, 0x800A, 0x2802, 0x0008, 0x2803, 0x4001],
}
streams = {0: evt2, 1: evt21, 2: evt21, 3: evt3}
names = {0: "evt2", 1: "evt21", 2: "evt21_legacy", 3: "evt3"}

headers = {
    "whole": b"% camera_integrator_name Somebody\n% date 2023-03-29 16:37:46\n% evt 3.0\n"
             b"% format EVT3;height=720;width=1280\n% geometry 1280x720\n% serial_number 00050423\n% end\n",
    "old": b"% Date 2020-09-25 07:48:31\n% serial_number 00000157\n% system_ID 21\n% evt 2.0\n",
    "crlf": b"% evt 2.1\r\n% endianness legacy\r\n% geometry 640x480\r\n% end\r\n",
    "nul": b"% date 2020\0% evt 3.0\0% geometry 640x480\n% end\0",
    "options": b"% format EVT21;width=640;x;endianness=legacy;;height=480;\n% end\n",
    "contradiction": b"% evt 2.0\n% format EVT3\n% end\n",
    "unknown": b"% format EVT4;width=1;height=1\n% end\n",
    "keys": b"% evt 2.0\n% my_key a b  c\n% empty\n% \n% my.key=1;2 value\n% evt 3.0\n% end of it\n% end\n",
    "bad_geometry": b"% evt 3\n% geometry 0x99999\n% geometry 640 x 480\n",
    "script": b"% Plot\nplot(x);\n",
    "none": b"\x05\x80\x64\x60",
}


def write(target, name, content):
    folder = corpus / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content)


for name, content in headers.items():
    write("rawheader", name, content)
for encoding, samples in streams.items():
    for name, values in samples.items():
        body = words(encoding, values)
        for sensor in (0, 3):
            write("evtreader", f"{names[encoding]}_{name}_{sensor}", bytes([encoding | sensor << 2, 7]) + body)
        write("evtreader", f"{names[encoding]}_{name}_long", bytes([encoding | 16, 200]) + body)
        header = {0: "EVT2", 1: "EVT21;endianness=little", 2: "EVT21;endianness=legacy", 3: "EVT3"}[encoding]
        write("rawfile", f"{names[encoding]}_{name}",
              f"% format {header};width=1280;height=720\n% end\n".encode() + body * 20)
        write("rawfile", f"{names[encoding]}_{name}_bare", body * 10)
for name, content in headers.items():
    write("rawfile", f"header_{name}", content + words(3, evt3["events"]) * 5)


def videos():
    """Containers of a few tiny pictures; needs ffmpeg."""
    source = ["-f", "lavfi", "-i", "testsrc=size=32x32:rate=30:duration=0.3"]
    h264 = ["-c:v", "libx264", "-preset", "ultrafast"]
    kinds = {
        "plain": h264,
        "fragments": [*h264, "-g", "3", "-movflags", "frag_keyframe+empty_moov"],
        "head_first": [*h264, "-movflags", "faststart"],
        "out_of_order": ["-c:v", "libx264", "-bf", "2"],
        "mpeg4": ["-c:v", "mpeg4"],
        "still": ["-c:v", "png", "-frames:v", "1"],
        "commented": [*h264, "-metadata", "comment=a comment"],
    }
    for name, options in kinds.items():
        yield name, [*source, *options]
    yield "sound", ["-f", "lavfi", "-i", "anullsrc=r=8000:cl=mono", "-t", "0.05", "-c:a", "aac"]


def damaged(data):
    yield "cut", data[: len(data) * 2 // 3]
    # Counts and sizes of tables made enormous: the four bytes in front of each table's entries.
    for box in (b"stsz", b"stsc", b"stts", b"stco", b"ctts", b"trun", b"tkhd"):
        at = data.find(box)
        if at >= 0:
            changed = bytearray(data)
            changed[at + 12:at + 16] = b"\x7f\xff\xff\xff"
            yield f"huge_{box.decode()}", bytes(changed)
            changed = bytearray(data)
            changed[at + 8:at + 12] = b"\x00\x00\x00\x01"
            changed[at + 12:at + 16] = b"\x00\xff\xff\xff"
            yield f"same_{box.decode()}", bytes(changed)


def endless(data):
    """One chunk of nine million pictures of a byte each: five thousand bytes that take minutes to walk through."""
    pictures = struct.pack(">I", 9_000_000)
    changed = bytearray(data)
    at = changed.find(b"stsz")
    changed[at + 8:at + 16] = struct.pack(">I", 1) + pictures
    at = changed.find(b"stsc")
    changed[at + 12:at + 24] = struct.pack(">I", 1) + pictures + struct.pack(">I", 1)
    at = changed.find(b"stts")
    changed[at + 12:at + 16] = pictures
    return bytes(changed)


def write_videos():
    import subprocess
    folder = corpus / "apsvideo"
    folder.mkdir(parents=True, exist_ok=True)
    for name, options in videos():
        path = folder / name
        subprocess.run(["ffmpeg", "-v", "error", "-y", *options, "-fflags", "+bitexact", "-f", "mp4", str(path)],
                       check=True)
        if name in ("plain", "fragments", "out_of_order"):
            for kind, data in damaged(path.read_bytes()):
                (folder / f"{name}_{kind}").write_bytes(data)
        if name == "plain":
            (folder / "plain_endless").write_bytes(endless(path.read_bytes()))
    (folder / "empty").write_bytes(b"")
    (folder / "text").write_bytes(b"This is no video.\n")


def write_settings():
    folder = corpus / "config"
    folder.mkdir(parents=True, exist_ok=True)
    plain = ("[Setting]\nlanguage=zh\ninput_raw_file_path=/tmp\noutput_raw_file_path=/\n"
             "video_save_path=/usr\n")
    texts = {
        "empty": b"",
        "plain": plain.encode(),
        "twice": (plain + plain.replace("zh", "en")).encode(),
        "other_language": b"[Setting]\nlanguage=xx\n",
        "lists": b"[Setting]\nlanguage=en, zh\nvideo_save_path=/tmp, /usr\n",
        "quotes": b'[Setting]\nlanguage="zh"\nvideo_save_path="/tmp/\\x4e2d\\n\\t\\\\"\n',
        "broken_quotes": b'[Setting]\nlanguage="zh\nvideo_save_path=\\\n',
        "variant": b"[Setting]\nlanguage=@Variant(\\0\\0\\0\\n\\0\\0\\0\\x4\\0z\\0h)\n",
        "huge_variant": b"[Setting]\nlanguage=@Variant(\\0\\0\\0\\n\\x7f\\xff\\xff\\xf0\\0z\\0h)\n",
        "list_variant": b"[Setting]\nlanguage=@Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)\n",
        "bytes": b"[Setting]\nlanguage=@ByteArray(zh)\noutput_raw_file_path=@Invalid()\n",
        "no_group": b"language=zh\n",
        "odd_group": b"[Setting\nlanguage=zh\n[]\nlanguage=zh\n[%General]\nx=1\n",
        "nul": b"[Setting]\nlanguage=z\0h\nvideo_save_path=/tmp\0/x\n",
        "latin": b"[Setting]\nvideo_save_path=/tmp/\xe4\xf6\xfc\n",
        "binary": bytes(range(256)),
    }
    for name, text in texts.items():
        (folder / name).write_bytes(text)


def write_times():
    folder = corpus / "rangetimes"
    folder.mkdir(parents=True, exist_ok=True)
    pairs = {
        "all": ("0", "99968"), "one": ("64", "64"), "gap": ("65", "127"), "backwards": ("900", "100"),
        "behind": ("100000", "200000"), "huge": ("0", "18446744073709551615"),
        "too_huge": ("18446744073709551616", "99999999999999999999999"), "negative": ("-1", "-99"),
        "letters": ("abc", "0x10"), "empty": ("", ""), "blanks": (" 64", "128 "), "zeros": ("00064", "000"),
        "signs": ("+64", "+-5"), "fractions": ("1.5", "1e3"), "groups": ("1,000", "10 000"),
        "nul": ("-118", "99999999\0\0'-9"), "other_digits": ("٦٤", "128"), "signed_limit": ("9223372036854775807", "9223372036854775808"),
    }
    for name, pair in pairs.items():
        (folder / name).write_text("\n".join(pair), encoding="utf-8")


write_videos()
write_settings()
write_times()
