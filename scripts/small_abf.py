#!/usr/bin/env python3
"""Makes a small whole ABF 1 file from a large one, as a fuzzing seed: the
header, the first blocks of samples and the tags, with the acquisition length
and the tag pointer rewritten to match. With --detect the detection settings
that fuzz_detect reads first are put before the file (the defaults, 4 blocks
per screen, screen 0).

usage: small_abf.py IN OUT [--detect]"""
import struct
import sys

MAX_BYTES = 60000  # under the fuzzer's -max_len


def main():
    src, dst = sys.argv[1], sys.argv[2]
    data = open(src, "rb").read()
    if len(data) < 2048 or data[:4] != b"ABF ":
        return 1
    acq, = struct.unpack_from("<i", data, 10)
    data_ptr, tag_ptr, tags = struct.unpack_from("<iii", data, 40)
    channels, = struct.unpack_from("<h", data, 120)
    if channels < 1 or data_ptr * 512 > len(data):
        return 1
    header = bytearray(data[:data_ptr * 512])
    tag_bytes = b""
    if tags > 0 and tag_ptr > 0 and tag_ptr * 512 + tags * 64 <= len(data):
        tag_bytes = data[tag_ptr * 512: tag_ptr * 512 + min(tags, 8) * 64]
        tags = min(tags, 8)
    else:
        tags = 0
    room = MAX_BYTES - len(header) - len(tag_bytes) - 1024
    frames = max(1, min(acq // channels, 4 * 256, room // (2 * channels)))
    samples = data[data_ptr * 512: data_ptr * 512 + frames * channels * 2]
    frames = len(samples) // (2 * channels)
    samples = samples[:frames * channels * 2]
    body = header + samples
    body += b"\0" * (-len(body) % 512)
    struct.pack_into("<i", body, 10, frames * channels)
    struct.pack_into("<ii", body, 44, len(body) // 512 if tags else 0, tags)
    body += tag_bytes
    prefix = b""
    if "--detect" in sys.argv:
        # PeakDirection, ThresholdAmplitude, the four periods with DecayPercent
        # and AreaThreshold, ComplexPeak, NumberPointsPeak, blocks, screen.
        prefix = struct.pack("<hfiiifif", -1, 5.0, 10000, 6000, 20000, 0.32, 2000, 50.0)
        prefix += struct.pack("<BhHH", 0, 1, 4, 0)
    open(dst, "wb").write(prefix + bytes(body))
    return 0


if __name__ == "__main__":
    sys.exit(main())
