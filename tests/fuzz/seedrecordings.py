#!/usr/bin/env python3
"""seedrecordings.py RECORDINGS SEEDS: cuts real recordings into seeds of the targets that read recordings. They stay
out of the repository: they are others' recordings, and targets find their way without them, only later."""

import pathlib
import sys

longest = 16000  # bytes of an input
recordings, seeds = map(pathlib.Path, sys.argv[1:])


def encoding(header):
    for mark, number in ((b"EVT21", 1), (b"evt 2.1", 1), (b"EVT2", 0), (b"evt 2", 0), (b"EVT3", 3), (b"evt 3", 3)):
        if mark in header:
            return 2 if number == 1 and b"legacy" in header else number
    return 3


def write(target, name, content):
    folder = seeds / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content[:longest])


for path in sorted(recordings.rglob("*.raw")):
    data = path.read_bytes()
    end = 0
    while data[end:end + 1] == b"%" and (line := data.find(b"\n", end)) >= 0:
        end = line + 1
        if data[:end].endswith((b"% end\n", b"% end\r\n")):
            break
    header, body = data[:end], data[end:]
    name = f"{path.parent.name}_{path.stem}"
    write("rawheader", name, data[:end + 64])
    for number, start in enumerate((0, len(body) // 3 // 8 * 8, len(body) * 2 // 3 // 8 * 8)):
        write("rawfile", f"{name}_{number}", header + body[start:])
        for size in (600, longest):
            # Large sensor, portions of many words.
            write("evtreader", f"{name}_{number}_{size}",
                  bytes([encoding(header) | 2 << 2, 255]) + body[start:start + size])
