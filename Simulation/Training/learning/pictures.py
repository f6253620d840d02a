# SPDX-License-Identifier: Apache-2.0
"""The pictures that marrowby-training-pictures draws, and how they are varied."""

from pathlib import Path

import numpy as np
import torch
import torch.nn.functional as F

FACE_SIDE, FACE_NUMBERS = 160, 256
SCENE_WIDTH, SCENE_HEIGHT, CROP_SIDE, SCENE_NUMBERS = 320, 240, 80, 64
FACE_BYTES = FACE_SIDE * FACE_SIDE * 3
PICTURE_BYTES = SCENE_WIDTH * SCENE_HEIGHT * 3
CROP_BYTES = CROP_SIDE * CROP_SIDE * 3

FACE = np.dtype([("numbers", "<f4", FACE_NUMBERS), ("picture", "u1", (FACE_SIDE, FACE_SIDE, 3))])
SCENE = np.dtype([("numbers", "<f4", SCENE_NUMBERS), ("picture", "u1", (SCENE_HEIGHT, SCENE_WIDTH, 3)),
                  ("crops", "u1", (2, 2, CROP_SIDE, CROP_SIDE, 3))])

# The point that takes each one's place in a mirror, as ranges of points whose indices add up to the same.
_MIRROR = [(32, 32), (37, 79), (41, 88), (46, 79), (50, 88), (54, None), (59, 114), (64, 132), (67, 140),
           (72, 132), (75, 140), (82, 158), (87, 170), (92, 180), (95, 188), (97, 193)]


def _mirrored(index: int) -> int:
    total = next(total for last, total in _MIRROR if index <= last)
    return index if total is None else total - index


# Drawing numbers anew for every picture would take longer than all else.
_NOISE = torch.from_numpy(np.random.default_rng(0).standard_normal(1 << 22, np.float32))
MIRRORED_POINTS = np.array([_mirrored(i) for i in range(98)])


class Records:
    """All records of one kind in a folder, by their numbers in the order of the files."""

    def __init__(self, folder: Path, kind: str):
        dtype = FACE if kind == "faces" else SCENE
        self.files = [np.memmap(path, dtype, "r") for path in sorted(folder.glob(f"{kind}-*.bin"))]
        if not self.files:
            raise SystemExit(f"There are no pictures in {folder}: draw them first.")
        self.starts = np.cumsum([0] + [len(file) for file in self.files])
        self.numbers = np.concatenate([np.array(file["numbers"]) for file in self.files])

    def __len__(self) -> int:
        return int(self.starts[-1])

    def take(self, field: str, indices) -> np.ndarray:
        files = np.searchsorted(self.starts, indices, "right") - 1
        return np.stack([self.files[file][field][index - self.starts[file]]
                         for file, index in zip(files, indices)])


def planes(pictures: np.ndarray) -> torch.Tensor:
    """N × height × width × 3 bytes to N × 3 × height × width floats, the channels last in memory: that halves
    the time of everything after."""
    return torch.from_numpy(np.ascontiguousarray(pictures)).permute(0, 3, 1, 2).float()


def warp(pictures: torch.Tensor, to_source: np.ndarray, width: int, height: int) -> torch.Tensor:
    """Draws each picture through the 2 × 3 matrix that takes a pixel of the result (pixel centres at 0.5) to
    one of the picture; black outside."""
    source = np.array([pictures.shape[3], pictures.shape[2]], np.float32)
    x, y = np.meshgrid(np.arange(width) + 0.5, np.arange(height) + 0.5)
    grid = np.stack([x.ravel(), y.ravel(), np.ones(width * height)]).astype(np.float32)
    places = np.einsum("nij,jk->nki", to_source.astype(np.float32), grid)
    places = places / source * 2 - 1
    places = torch.from_numpy(places.reshape(-1, height, width, 2))
    return F.grid_sample(pictures, places, align_corners=False)


def discoloured(pictures: torch.Tensor, dice: np.random.Generator) -> torch.Tensor:
    """Other exposures, white balances, blurs and noises. Values 0…255."""
    count = len(pictures)

    def column(values):
        return torch.from_numpy(np.asarray(values, np.float32)).reshape(count, -1, 1, 1)

    gain = np.exp(dice.uniform(-0.3, 0.3, (count, 1))) * np.exp(dice.uniform(-0.1, 0.1, (count, 3)))
    result = pictures.contiguous(memory_format=torch.channels_last)
    result = result * column(gain) + column(dice.uniform(-18, 18, (count, 1)))
    # They come in no order: every second one is blurred.
    half = result[:count // 2]
    half += (F.avg_pool2d(half, 3, 1, 1, count_include_pad=False) - half) * column(
        dice.uniform(0, 1, (count, 1)))[:len(half)]
    first = int(dice.integers(0, len(_NOISE) - result.numel()))
    noise = _NOISE[first:first + result.numel()].reshape(count, *result.shape[2:], 3).permute(0, 3, 1, 2)
    result += noise * column(dice.uniform(-3, 7, (count, 1)).clip(0))
    return result.clamp_(0, 255)
