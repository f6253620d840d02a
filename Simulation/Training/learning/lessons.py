# SPDX-License-Identifier: Apache-2.0
"""What each network learns from: how a batch is made of pictures, and how wrong the network is about it."""

from pathlib import Path

import numpy as np
import torch
import torch.nn as nn
import torch.nn.functional as F

from . import networks
from .pictures import (FACE_SIDE, MIRRORED_POINTS, SCENE_WIDTH, SCENE_HEIGHT, Records, discoloured, planes, warp)


def similarity(scale, angle, centre, target):
    """N matrices (2 × 3) that take `target` to `centre`, enlarging and turning."""
    a, b = scale * np.cos(angle), scale * np.sin(angle)
    turn = np.stack([np.stack([a, -b], 1), np.stack([b, a], 1)], 1)
    shift = centre - np.einsum("nij,nj->ni", turn, target)
    return np.concatenate([turn, shift[:, :, None]], 2)


def applied(matrices, points):
    """N × P points through N matrices."""
    return np.einsum("nij,npj->npi", matrices[:, :, :2], points) + matrices[:, None, :, 2]


def inverted(matrices):
    turn = np.linalg.inv(matrices[:, :, :2])
    return np.concatenate([turn, -np.einsum("nij,nj->ni", turn, matrices[:, :, 2])[:, :, None]], 2)


class FinderLesson:
    batch, steps, rate = 16, 2500, 2e-3
    width, height = 256, 192
    # Of sqrt(width × height), by stride; where two meet, both are to find the face.
    sizes = ((0, 44), (34, 96), (76, 1e9))

    def __init__(self, folder: Path):
        self.records = Records(folder, "scenes")
        self.network = networks.Finder()

    def faces(self, numbers):
        """Boxes and points of one picture: F × 4, F × 5 × 2; which need not be found."""
        faces = numbers[16:].reshape(3, 16)[:int(numbers[0])]
        return faces[:, :4], faces[:, 4:14].reshape(-1, 5, 2), faces[:, 15] > 0

    def loss(self, dice):
        picked = dice.integers(0, len(self.records), self.batch)
        pictures = planes(self.records.take("picture", picked))
        enlarged = np.exp(dice.uniform(np.log(0.6), np.log(1.3), self.batch))
        flips = dice.random(self.batch) < 0.5
        room = np.array([self.width, self.height]) / np.array([SCENE_WIDTH, SCENE_HEIGHT])
        # Where the result's middle lies: anywhere that keeps half of the picture in.
        reach = 0.5 * np.maximum(0.15, np.abs(1 - room[None] / enlarged[:, None]))
        middles = (0.5 + dice.uniform(-1, 1, (self.batch, 2)) * reach) * [SCENE_WIDTH, SCENE_HEIGHT]
        to_source = np.zeros((self.batch, 2, 3))
        to_source[:, 0, 0] = np.where(flips, -1, 1) / enlarged
        to_source[:, 1, 1] = 1 / enlarged
        to_source[:, :, 2] = middles - np.einsum("nij,j->ni", to_source[:, :, :2],
                                                 np.array([self.width, self.height]) / 2)
        seen = discoloured(warp(pictures, to_source, self.width, self.height), dice)

        targets = [np.zeros((self.batch, 16, self.height // s, self.width // s), np.float32)
                   for s in networks.Finder.STRIDES]
        # 1 where the cell counts as a face, 0 where it counts as none, -1 where it does not matter.
        kinds = [np.zeros((self.batch, t.shape[2], t.shape[3]), np.float32) for t in targets]
        from_source = inverted(to_source)
        for n, index in enumerate(picked):
            for box, points, hard in zip(*self.faces(self.records.numbers[index])):
                corners = applied(from_source[n:n + 1], np.array([[box[:2], box[:2] + box[2:]]]))[0]
                low, high = corners.min(0), corners.max(0)
                points = applied(from_source[n:n + 1], points[None])[0]
                if flips[n]:
                    points = points[[1, 0, 2, 4, 3]]
                inside = np.minimum(high, [self.width, self.height]) - np.maximum(low, 0)
                visible = inside.clip(0).prod() / max((high - low).prod(), 1e-6)
                if visible < 0.05:
                    continue
                hard = hard or visible < 0.6 or (high - low).min() < 11
                self.mark(n, low, high, points, hard, targets, kinds)
        return self.error(self.network.maps(seen), targets, kinds)

    def mark(self, n, low, high, points, hard, targets, kinds):
        size, middle = high - low, (low + high) / 2
        for stride, (least, most), target, kind in zip(networks.Finder.STRIDES, self.sizes, targets, kinds):
            columns, rows = np.arange(kind.shape[2]), np.arange(kind.shape[1])
            away = np.maximum(np.abs((columns[None] + 0.5) * stride - middle[0]) / size[0],
                              np.abs((rows[:, None] + 0.5) * stride - middle[1]) / size[1])
            near = max(0.17, 0.55 * stride / size.min())
            if hard:
                kind[n][away < 0.6] = -1
                continue
            kind[n][(away < 2 * near) & (kind[n] == 0)] = -1
            if not least <= np.sqrt(size.prod()) < most:
                continue
            ys, xs = np.nonzero(away < near)
            kind[n][ys, xs] = 1
            target[n, 2:4, ys, xs] = np.stack([middle[0] / stride - xs, middle[1] / stride - ys], 1)
            target[n, 4:6, ys, xs] = np.log(size / stride)
            for j, (x, y) in enumerate(points):
                target[n, 6 + 2 * j, ys, xs] = x / stride - xs
                target[n, 7 + 2 * j, ys, xs] = y / stride - ys

    @staticmethod
    def error(maps, targets, kinds):
        total, found = 0, 1
        for level, target, kind in zip(maps, targets, kinds):
            kind, target = torch.from_numpy(kind), torch.from_numpy(target)
            face = kind == 1
            found += int(face.sum())
            fit = torch.zeros_like(kind)
            if face.any():
                mine, true = level.permute(0, 2, 3, 1)[face], target.permute(0, 2, 3, 1)[face]
                half, true_half = mine[:, 4:6].clamp(-3, 5).exp() / 2, true[:, 4:6].exp() / 2
                low = torch.maximum(mine[:, 2:4] - half, true[:, 2:4] - true_half)
                high = torch.minimum(mine[:, 2:4] + half, true[:, 2:4] + true_half)
                common = (high - low).clamp(min=0).prod(1)
                overlap = common / (4 * half.prod(1) + 4 * true_half.prod(1) - common)
                fit[face] = overlap.detach()
                # Errors in parts of the face.
                size = 2 * true_half.prod(1, keepdim=True).sqrt()
                total = total + (1 - overlap).sum() * 2
                total = total + F.smooth_l1_loss(mine[:, 4:6], true[:, 4:6], beta=0.05, reduction="sum")
                total = total + 4 * F.smooth_l1_loss(mine[:, 2:4] / size, true[:, 2:4] / size, beta=0.05,
                                                     reduction="sum")
                total = total + F.smooth_l1_loss(mine[:, 6:] / size, true[:, 6:] / size, beta=0.05,
                                                 reduction="sum")
            counts = (kind >= 0).float()
            for channel, wanted in ((0, face.float()), (1, fit)):
                scores = level[:, channel]
                sure = torch.sigmoid(scores).detach()
                weight = counts * torch.where(face, torch.ones_like(sure), sure ** 2)
                total = total + (weight * F.binary_cross_entropy_with_logits(scores, wanted,
                                                                             reduction="none")).sum()
        return total / found


class LandmarksLesson:
    batch, steps, rate = 64, 5000, 3e-3
    side = 112

    def __init__(self, folder: Path):
        self.records = Records(folder, "faces")
        self.network = networks.Landmarks()

    def loss(self, dice):
        picked = dice.integers(0, len(self.records), self.batch)
        numbers = self.records.numbers[picked]
        boxes, points = numbers[:, 1:5], numbers[:, 8:204].reshape(-1, 98, 2)
        length = boxes[:, 2:].max(1)
        # As boxes from a finder lie.
        scale = length / self.side * np.exp(dice.uniform(-0.13, 0.13, self.batch))
        middle = boxes[:, :2] + boxes[:, 2:] / 2 + dice.uniform(-0.07, 0.07, (self.batch, 2)) * length[:, None]
        to_source = similarity(scale, dice.uniform(-0.15, 0.15, self.batch), middle,
                               np.full((self.batch, 2), self.side / 2))
        flips = dice.random(self.batch) < 0.5
        to_source[flips] = mirrored(to_source[flips], self.side)
        seen = discoloured(warp(planes(self.records.take("picture", picked)), to_source, self.side, self.side),
                           dice)
        points = applied(inverted(to_source), points) / self.side
        points[flips] = points[flips][:, MIRRORED_POINTS]
        wrong = self.network(seen) - torch.from_numpy(points.reshape(self.batch, -1).astype(np.float32))
        # Grows with the error where it is large, faster where it is small.
        return (torch.log1p(wrong.abs() / 0.01)).mean()


def mirrored(to_source, side):
    """The same for a result that is flipped."""
    flip = np.array([[-1, 0, side], [0, 1, 0], [0, 0, 1.0]])
    whole = np.concatenate([to_source, np.broadcast_to([[[0, 0, 1.0]]], (len(to_source), 1, 3))], 1)
    return (whole @ flip)[:, :2]


# Where the aligner puts eyes, nose and mouth corners.
REFERENCE = np.array([[38.2946, 51.6963], [73.5318, 51.5014], [56.0252, 71.7366], [41.5493, 92.3655],
                      [70.7299, 92.2041]])


def five_points(points):
    """Of N × 98 points those that the aligner uses."""
    lips = points[:, 76:88]
    rows = np.arange(len(points))
    return np.stack([points[:, 96], points[:, 97], points[:, 53:60].mean(1),
                     lips[rows, lips[:, :, 0].argmin(1)], lips[rows, lips[:, :, 0].argmax(1)]], 1)


def aligned(points):
    """The matrices from aligned crops to pictures with these five points."""
    p, q = points.mean(1, keepdims=True), REFERENCE.mean(0)
    d, u = points - p, REFERENCE - q
    spread = (d ** 2).sum((1, 2))
    a = (d * u).sum((1, 2)) / spread
    b = (d[:, :, 0] * u[:, 1] - d[:, :, 1] * u[:, 0]).sum(1) / spread
    turn = np.stack([np.stack([a, -b], 1), np.stack([b, a], 1)], 1)
    shift = q - np.einsum("nij,nj->ni", turn, p[:, 0])
    return inverted(np.concatenate([turn, shift[:, :, None]], 2))


class EmbedderLesson:
    """The cosine to the own person must be the largest by a margin (https://arxiv.org/abs/1801.09414)."""
    batch, steps, rate = 64, 6000, 2e-3
    side, sharpness, margin = 112, 24.0, 0.3

    def __init__(self, folder: Path):
        self.records = Records(folder, "faces")
        self.people = int(self.records.numbers[:, 0].max()) + 1
        self.network = nn.ModuleDict({"embedder": networks.Embedder(),
                                      "people": nn.Linear(128, self.people, bias=False)})

    def loss(self, dice):
        picked = dice.integers(0, len(self.records), self.batch)
        numbers = self.records.numbers[picked]
        points = five_points(numbers[:, 8:204].reshape(-1, 98, 2).astype(np.float64))
        eyes = np.linalg.norm(points[:, 1] - points[:, 0], axis=1)
        points += dice.normal(0, 0.03, points.shape) * eyes.clip(8)[:, None, None]
        to_source = aligned(points)
        flips = dice.random(self.batch) < 0.5
        to_source[flips] = mirrored(to_source[flips], self.side)
        seen = warp(planes(self.records.take("picture", picked)), to_source, self.side, self.side)
        seen = discoloured(seen, dice).flip(1)  # red, green, blue
        found = F.normalize(self.network["embedder"](seen))
        cosines = found @ F.normalize(self.network["people"].weight).t()
        people = torch.from_numpy(numbers[:, 0].astype(np.int64))
        less = F.one_hot(people, self.people) * self.margin
        return F.cross_entropy((cosines - less) * self.sharpness, people)


class RealFaceLesson:
    batch, steps, rate = 64, 4000, 2e-3

    def __init__(self, folder: Path):
        self.records = Records(folder, "scenes")
        classes = self.records.numbers[:, 1].astype(int)
        self.by_class = [np.nonzero(classes == each)[0] for each in range(3)]
        self.network = networks.RealFace()

    def loss(self, dice):
        classes = dice.choice(3, self.batch, p=[0.28, 0.44, 0.28])
        picked = np.array([dice.choice(self.by_class[each]) for each in classes])
        crops = self.records.take("crops", picked)[np.arange(self.batch), dice.integers(0, 2, self.batch)]
        flips = dice.random(self.batch) < 0.5
        crops[flips] = crops[flips][:, :, :, ::-1]
        # Boxes lie a little elsewhere each time. Nothing is blurred: what is sharp tells.
        shifts = dice.integers(-3, 4, (self.batch, 2))
        crops = np.stack([np.roll(pair, tuple(shift), (1, 2)) for pair, shift in zip(crops, shifts)])
        gain = np.exp(dice.uniform(-0.4, 0.4, (self.batch, 1)) + dice.uniform(-0.12, 0.12, (self.batch, 3)))
        lift = dice.uniform(-15, 15, (self.batch, 1)) + dice.uniform(-4, 4, (self.batch, 3))
        gain, lift = (torch.from_numpy(each.astype(np.float32))[:, :, None, None] for each in (gain, lift))
        seen = [(planes(crops[:, each]) * gain + lift).clamp(0, 255) for each in range(2)]
        wanted = torch.from_numpy(classes)
        return sum(F.cross_entropy(scores, wanted, label_smoothing=0.02)
                   for scores in self.network.scores(*seen)) / 2


LESSONS = {"finder": FinderLesson, "landmarks": LandmarksLesson, "embedder": EmbedderLesson,
           "realFace": RealFaceLesson}
