# SPDX-License-Identifier: Apache-2.0
"""The four networks. Inputs are 0…255; the scale to 0…1 is their first step. Small and separable, of steps that
OpenCV 4.6 can import."""

import torch
import torch.nn as nn
import torch.nn.functional as F


class Conv(nn.Sequential):
    def __init__(self, inputs, outputs, size=3, stride=1, groups=1, active=True):
        super().__init__(nn.Conv2d(inputs, outputs, size, stride, size // 2, groups=groups, bias=False),
                         nn.BatchNorm2d(outputs), *([nn.ReLU()] if active else []))


class Separable(nn.Module):
    """Depthwise and pointwise; added to its input where the shapes agree."""

    def __init__(self, inputs, outputs, stride=1):
        super().__init__()
        self.steps = nn.Sequential(Conv(inputs, inputs, 3, stride, inputs), Conv(inputs, outputs, 1, active=False))
        self.is_residual = stride == 1 and inputs == outputs

    def forward(self, x):
        y = self.steps(x)
        return F.relu(x + y if self.is_residual else y)


def scaled(picture):
    return picture * (1 / 255)


class Finder(nn.Module):
    """Cells of 8, 16 and 32 pixels: how likely a face, how well the box fits, box, five points."""

    STRIDES = (8, 16, 32)
    # Faces are found from a score of 0.6 on; what is none was taken for one up to 0.75, of what is one a
    # hundredth for less than 0.84.
    CAUTION = 0.85

    def __init__(self, width=48):
        super().__init__()
        self.stem = nn.Sequential(Conv(3, 16, stride=2), Separable(16, 32, 2), Separable(32, 32))
        self.stages = nn.ModuleList([
            nn.Sequential(Separable(32, 64, 2), Separable(64, 64)),
            nn.Sequential(Separable(64, 96, 2), Separable(96, 96)),
            nn.Sequential(Separable(96, 128, 2), Separable(128, 128), Separable(128, 128))])
        self.sides = nn.ModuleList([Conv(channels, width, 1) for channels in (64, 96, 128)])
        self.mixed = nn.ModuleList([Separable(width, width) for _ in self.STRIDES])
        self.heads = nn.ModuleList([nn.Conv2d(width, 16, 1) for _ in self.STRIDES])

    def maps(self, picture):
        """By stride 16 numbers a cell: face, fit (before the sigmoid), 4 of the box, 10 of the points."""
        x = self.stem(scaled(picture))
        levels = []
        for stage, side in zip(self.stages, self.sides):
            x = stage(x)
            levels.append(side(x))
        levels[1] = levels[1] + F.interpolate(levels[2], scale_factor=2.0, mode="nearest")
        levels[0] = levels[0] + F.interpolate(levels[1], scale_factor=2.0, mode="nearest")
        return [head(mix(level)) for head, mix, level in zip(self.heads, self.mixed, levels)]

    def forward(self, picture):
        cells = [level.permute(0, 2, 3, 1).reshape(1, -1, 16) for level in self.maps(picture)]
        return tuple([torch.sigmoid(cell[:, :, :1] - self.CAUTION) for cell in cells]
                     + [torch.sigmoid(cell[:, :, 1:2] - self.CAUTION) for cell in cells]
                     + [cell[:, :, 2:6] for cell in cells] + [cell[:, :, 6:] for cell in cells])


class Landmarks(nn.Module):
    """98 points, x and y in turn, in 0…1 of the square."""

    def __init__(self):
        super().__init__()
        self.steps = nn.Sequential(
            Conv(3, 16, stride=2), Separable(16, 32, 2), Separable(32, 32), Separable(32, 64, 2), Separable(64, 64),
            Separable(64, 64), Separable(64, 96, 2), Separable(96, 96), Separable(96, 96), Conv(96, 24, 1))
        self.points = nn.Conv2d(24, 196, 7)

    def forward(self, picture):
        return self.points(self.steps(scaled(picture))).flatten(1) + 0.5


class Embedder(nn.Module):
    """128 numbers of any length, alike in direction for pictures of one person."""

    def __init__(self):
        super().__init__()
        self.steps = nn.Sequential(
            Conv(3, 16, stride=2), Separable(16, 32, 2), Separable(32, 48), Separable(48, 48),
            Separable(48, 96, 2), Separable(96, 96), Separable(96, 96), Separable(96, 96),
            Separable(96, 192, 2), Separable(192, 192), Separable(192, 192),
            nn.Conv2d(192, 192, 7, groups=192, bias=False), nn.BatchNorm2d(192),
            nn.Conv2d(192, 128, 1, bias=False), nn.BatchNorm2d(128))

    def forward(self, picture):
        return self.steps(scaled(picture)).flatten(1)


class RealFace(nn.Module):
    """How likely paper, a living face and a screen are; of a narrow and a wide crop."""

    # Learnt from more attacks than people, it is stern with people whom it does not know: with so much for the
    # living, on five of them, 95 % of their pictures reached 0.66, and 95 % of every attack’s stayed below 0.45.
    LENIENCE = 3.5

    @staticmethod
    def branch():
        return nn.Sequential(
            Conv(3, 24, stride=2), Separable(24, 32), Separable(32, 48, 2), Separable(48, 48), Separable(48, 96, 2),
            Separable(96, 96), Separable(96, 128, 2), Separable(128, 128), nn.AvgPool2d(5), nn.Dropout(0.3),
            nn.Conv2d(128, 3, 1))

    def __init__(self):
        super().__init__()
        self.narrow, self.wide = self.branch(), self.branch()

    def scores(self, crop27, crop40):
        return self.narrow(scaled(crop27)).flatten(1), self.wide(scaled(crop40)).flatten(1)

    def forward(self, crop27, crop40):
        leaning = torch.tensor([[0, self.LENIENCE, 0]])
        narrow, wide = (F.softmax(scores + leaning, 1) for scores in self.scores(crop27, crop40))
        return (narrow + wide) * 0.5, narrow, wide
