#!/usr/bin/env python3
"""Makes the notice sound: three soft partials whose pitch rises and sinks again like an arc.

    make_sound.py [output directory]
"""

import argparse
import pathlib
import struct

RATE = 22050
SECONDS = 0.6
PEAK = 0.5  # of full scale: -6 dB
PITCH = 587.33  # Hz at both ends of the arc, and ARC times as high at its top
ARC = 1.335
PARTIALS = ((1, 1.0, 3.0), (2, 0.34, 5.0), (3, 0.14, 8.0))  # multiple of the pitch, loudness, rate of decay
ATTACK = 0.018  # seconds
RELEASE = 0.12

SINE_TERMS = 9
EXP_HALVINGS = 8
EXP_TERMS = 8


def sine(turns):
    """Sine of a whole turn's share. The C library's sine differs in its last bit between machines; this does not."""
    x = turns - int(turns)
    if x > 0.5:
        x -= 1
    x *= 6.283185307179586
    term = total = x
    for n in range(1, SINE_TERMS + 1):
        term *= -x * x / ((2 * n) * (2 * n + 1))
        total += term
    return total


def fading(x):
    """e to the power of -x."""
    small = -x / (1 << EXP_HALVINGS)
    term = total = 1.0
    for n in range(1, EXP_TERMS + 1):
        term *= small / n
        total += term
    for _ in range(EXP_HALVINGS):
        total *= total
    return total


def smooth(share):
    """From 0 to 1 with level ends."""
    share = min(max(share, 0.0), 1.0)
    return share * share * (3 - 2 * share)


def samples():
    count = int(RATE * SECONDS)
    wave, phase = [], 0.0
    for index in range(count):
        time = index / RATE
        rest = SECONDS - time - 1 / RATE
        position = index / (count - 1)
        envelope = smooth(time / ATTACK) * smooth(rest / RELEASE)
        wave.append(envelope * sum(loudness * fading(decay * time) * sine(multiple * phase)
                                   for multiple, loudness, decay in PARTIALS))
        phase += PITCH * (1 + (ARC - 1) * 4 * position * (1 - position)) / RATE
    loudest = max(abs(value) for value in wave)
    scale = PEAK * 32767 / loudest
    return [int(value * scale + (0.5 if value >= 0 else -0.5)) for value in wave]


def wav(values):
    data = struct.pack(f"<{len(values)}h", *values)
    form = struct.pack("<4sIHHIIHH", b"fmt ", 16, 1, 1, RATE, RATE * 2, 2, 16)
    body = b"WAVE" + form + struct.pack("<4sI", b"data", len(data)) + data
    return struct.pack("<4sI", b"RIFF", len(body)) + body


def main():
    parser = argparse.ArgumentParser(description="Makes the notice sound.")
    parser.add_argument("directory", nargs="?", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent / "app" / "res")
    directory = parser.parse_args().directory
    directory.mkdir(parents=True, exist_ok=True)
    (directory / "Arc.wav").write_bytes(wav(samples()))


if __name__ == "__main__":
    main()
