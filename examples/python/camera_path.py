#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Stitches the pictures of a folder, or a simulated scene, and plots the way of the camera over the
mosaic. Wants numpy, matplotlib and Pillow.

    camera_path.py FOLDER -o path.png
    camera_path.py -o path.png
"""

import argparse
import itertools
import re
import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")  # Into a file; no screen is needed.
import matplotlib.pyplot as plt
import numpy as np
from PIL import Image

import framequilt

PICTURES = {".png", ".jpg", ".jpeg", ".bmp", ".tif", ".tiff"}


def numbers_as_numbers(path):
    parts = re.split(r"(\d+)", path.name.lower())
    return [int(part) if part.isdigit() else part for part in parts]


def pictures_of(folder):
    """Red, green and blue of each picture, f2 before f10."""
    paths = [path for path in Path(folder).iterdir() if path.suffix.lower() in PICTURES]
    if not paths:
        raise SystemExit(f"{folder} holds no pictures: name a folder of PNG, JPEG, BMP or TIFF files")
    for path in sorted(paths, key=numbers_as_numbers):
        yield np.asarray(Image.open(path).convert("RGB"))


def simulated_scene(rows, cols, random):
    """Hills of several sizes in earthen colours, with stones on them."""
    height = np.zeros((rows, cols))
    for size in (200, 80, 30):
        coarse = random.random((rows // size + 3, cols // size + 3)).astype(np.float32)
        fine = Image.fromarray(coarse).resize((cols, rows), Image.BICUBIC)
        height += np.asarray(fine) * size / 200
    height = (height - height.min()) / np.ptp(height)
    ends = np.array([[52, 78, 54], [206, 186, 140]])
    scene = ends[0] + height[..., np.newaxis] * (ends[1] - ends[0])
    for _ in range(rows * cols // 200):
        y, x = random.integers(0, rows - 12), random.integers(0, cols - 12)
        h, w = random.integers(4, 12, 2)
        scene[y : y + h, x : x + w] = scene[y, x] * random.uniform(0.5, 1.5)
    return scene.clip(1, 255).astype(np.uint8)


def simulated_frames(rows=300, cols=400, count=48):
    """What a camera sees on an eight over a scene."""
    random = np.random.default_rng(5)
    scene = simulated_scene(1000, 1400, random)
    turn = np.linspace(0, 1.9 * np.pi, count)
    xs = (scene.shape[1] - cols) * (0.5 + 0.48 * np.sin(turn))
    ys = (scene.shape[0] - rows) * (0.5 + 0.48 * np.sin(2 * turn))
    for x, y in zip(xs.astype(int), ys.astype(int)):
        frame = scene[y : y + rows, x : x + cols]
        noise = random.integers(-3, 4, frame.shape)
        yield (frame + noise).clip(1, 255).astype(np.uint8)


def stitch(frames):
    """The mosaic, red first, and where in it the centre of each joined frame lies."""
    first = next(frames)
    rows, cols = first.shape[:2]
    placements = {}
    with framequilt.Session(rows=rows, cols=cols) as session:
        for frame in itertools.chain([first], frames):
            result = session.add(frame, pixel_order="rgb")
            if result.verdict is framequilt.Verdict.JOINED:
                placements.setdefault(session.first_frame, (0, 0))
                placements[result.frame] = result.placement
            elif result.verdict is framequilt.Verdict.REFUSED:
                print(f"frame {result.frame}: {result.explain()}; {result.reason.words.advice}")
        print(f"joined {len(placements)} of {result.frame + 1} frames")
        corner = np.array(session.steady_box[:2])
        centres = (np.array(list(placements.values())) + (cols / 2, rows / 2)) / session.scale
        return session.mosaic()[..., ::-1], centres - corner


def plot(mosaic, centres, file):
    rows, cols = mosaic.shape[:2]
    figure, axes = plt.subplots(figsize=(9, 9 * rows / cols + 0.5), layout="constrained")
    axes.imshow(np.where(mosaic == 0, 255, mosaic))  # White where no frame lies.
    axes.plot(*centres.T, color="white", linewidth=3)
    axes.plot(*centres.T, color="black", linewidth=1)
    axes.scatter(*centres.T, c=range(len(centres)), s=40, edgecolors="black", zorder=3)
    ends = {"first": centres[0], "last": centres[-1]}
    for name, centre in ends.items():
        style = {"boxstyle": "round", "facecolor": "white", "alpha": 0.8}
        axes.annotate(name, centre, (6, 9), textcoords="offset points", bbox=style)
    axes.set(title=f"Way of the camera, {len(centres)} frames", xlabel="mosaic pixels")
    figure.savefig(file, dpi=110)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", nargs="?", help="of pictures of one size; else a simulated scene")
    parser.add_argument("-o", "--output", default="camera-path.png", help="the plot")
    arguments = parser.parse_args()

    frames = pictures_of(arguments.folder) if arguments.folder else simulated_frames()
    mosaic, centres = stitch(frames)
    if not len(centres):
        raise SystemExit("no frames were joined: let neighbouring frames share about half")
    plot(mosaic, centres, arguments.output)
    print(f"the plot is in {arguments.output}")


if __name__ == "__main__":
    try:
        main()
    except (framequilt.Error, OSError) as failure:
        sys.exit(f"camera_path: {failure}")
