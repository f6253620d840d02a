# SPDX-License-Identifier: Apache-2.0
"""The published files of the standard pack, and their download."""

# macOS ships Python 3.9.
from __future__ import annotations

import hashlib
import os
import shutil
import urllib.error
import urllib.request
from dataclasses import dataclass
from pathlib import Path


class Refusal(Exception):
    """A sentence for the user."""


@dataclass(frozen=True)
class Original:
    file: str
    url: str
    sha256: str
    size: int


ZOO = "https://github.com/opencv/opencv_zoo/raw/main/models/"
MINIVISION = ("https://github.com/minivision-ai/Silent-Face-Anti-Spoofing/raw/"
              "b6d5f04ad78778917853b25c778acef6d5626d15/resources/anti_spoof_models/")
PFLD = ("https://github.com/AnthonyF333/PFLD_GhostOne/raw/"
        "7061b5649ffdb6e7fbb4add2372346264a160343/onnx_models/")

FINDER = Original(
    "face_detection_yunet_2023mar.onnx", ZOO + "face_detection_yunet/face_detection_yunet_2023mar.onnx",
    "8f2383e4dd3cfbb4553ea8718107fc0423210dc964f9f4280604804ed2552fa4", 232589)
LANDMARKS = Original(
    "PFLD_GhostOne_112_1_opt_sim.onnx", PFLD + "PFLD_GhostOne_112_1_opt_sim.onnx",
    "74d1a83932af79c2689d9371b21f32d014552f089985f076e832e89cb18f41e8", 2838549)
EMBEDDER = Original(
    "face_recognition_sface_2021dec.onnx",
    ZOO + "face_recognition_sface/face_recognition_sface_2021dec.onnx",
    "0ba9fbfa01b5270c96627c4ef784da859931e02f04419c829e83484087c34e79", 38696353)
REAL_FACE_27 = Original(
    "2.7_80x80_MiniFASNetV2.pth", MINIVISION + "2.7_80x80_MiniFASNetV2.pth",
    "a5eb02e1843f19b5386b953cc4c9f011c3f985d0ee2bb9819eea9a142099bec0", 1849453)
REAL_FACE_40 = Original(
    "4_0_0_80x80_MiniFASNetV1SE.pth", MINIVISION + "4_0_0_80x80_MiniFASNetV1SE.pth",
    "84ee1d37d96894d5e82de5a57df044ef80a58be2b218b5ed7cdfd875ec2f5990", 1856130)


def sha256(path: Path) -> str:
    digest = hashlib.sha256()
    with open(path, "rb") as stream:
        while piece := stream.read(1 << 20):
            digest.update(piece)
    return digest.hexdigest()


class Progress:
    """Prints how much of all the files is there, in per cent, whenever that changes."""

    def __init__(self, files: list[Original]):
        self.whole, self.have, self.said = sum(file.size for file in files), {}, -1

    def __call__(self, original: Original, have: int) -> None:
        self.have[original.file] = have
        percent = 100 * sum(self.have.values()) // self.whole
        if percent != self.said:
            self.said = percent
            print(f"{percent} %", flush=True)


def silent(original: Original, have: int) -> None:
    """No progress."""


def gather(original: Original, cache: Path, folder: Path | None, mirror: str | None, progress=silent) -> Path:
    """The verified file in the cache; copied from a folder or downloaded if missing."""
    target = cache / original.file
    if target.exists() and sha256(target) == original.sha256:
        progress(original, original.size)
        return target
    part = cache / (original.file + ".part")
    if folder is not None:
        if not (folder / original.file).is_file():
            raise Refusal(f"{original.file} isn’t in {folder}.")
        shutil.copyfile(folder / original.file, part)
    else:
        download(mirror.rstrip("/") + "/" + original.file if mirror else original.url, part, original, progress)
    if (found := sha256(part)) != original.sha256:
        part.unlink()
        raise Refusal(f"{original.file} isn’t the published file (SHA-256 {found}, "
                      f"expected {original.sha256}); it was deleted.")
    os.replace(part, target)
    return target


def download(url: str, part: Path, original: Original, progress=silent) -> None:
    """Resumes an earlier download."""
    have = part.stat().st_size if part.exists() else 0
    if have >= original.size:
        return
    request = urllib.request.Request(url, headers={"Range": f"bytes={have}-"} if have else {})
    print(f"Downloading {original.file}" + (f" from byte {have}" if have else "") + " …", flush=True)
    try:
        with urllib.request.urlopen(request, timeout=60) as answer:
            # A server without range requests sends the whole file.
            with open(part, "ab" if answer.status == 206 else "wb") as out:
                # Never more than the file's size, whatever the server sends.
                left = original.size + 1 - out.tell()
                while left > 0 and (piece := answer.read(min(1 << 16, left))):
                    out.write(piece)
                    left -= len(piece)
                    progress(original, out.tell())
    except (urllib.error.URLError, OSError) as fault:
        raise Refusal(f"{original.file} couldn’t be downloaded: {fault}. "
                      "What has come is kept; run this again to go on.") from fault
    if part.stat().st_size < original.size:
        raise Refusal(f"{original.file} came only in part. Run this again to go on.")
