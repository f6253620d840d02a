# SPDX-License-Identifier: Apache-2.0
"""From trained networks to a pack."""

import hashlib
import io
import json
from pathlib import Path

import onnx
import torch
from onnx import helper

IDENTIFIER_KEY = "marrowby.model.identifier"
# Of every role: the pack's name for it, its file and identifier, and the names and sizes of its ends.
ROLES = {
    "finder": {"name": "Marrowby Finder", "file": "Finder.onnx", "identifier": "marrowby-finder-1",
               "inputs": {"input": (1, 3, 640, 640)},
               "outputs": [f"{kind}_{stride}" for kind in ("cls", "obj", "bbox", "kps") for stride in (8, 16, 32)]},
    "landmarks": {"name": "Marrowby Landmarks", "file": "Landmarks.onnx", "identifier": "marrowby-landmarks-1",
                  "inputs": {"image": (1, 3, 112, 112)}, "outputs": ["landmarks"]},
    "embedder": {"name": "Marrowby Embedder", "file": "Embedder.onnx", "identifier": "marrowby-embedder-1",
                 "inputs": {"image": (1, 3, 112, 112)}, "outputs": ["embedding"]},
    "realFace": {"name": "Marrowby Real Face", "file": "RealFace.onnx", "identifier": "marrowby-real-face-1",
                 "inputs": {"crop27": (1, 3, 80, 80), "crop40": (1, 3, 80, 80)},
                 "outputs": ["probabilities", "probabilities27", "probabilities40"]},
}
CARD = "for the rehearsal's made-up people; not for real faces"


def export(role: str, network: torch.nn.Module, folder: Path) -> Path:
    """Writes the file of one role; opset 10, which OpenCV 4.6 reads throughout."""
    about = ROLES[role]
    network.to(memory_format=torch.contiguous_format).eval()
    buffer = io.BytesIO()
    torch.onnx.export(network, tuple(torch.zeros(shape) for shape in about["inputs"].values()), buffer,
                      input_names=list(about["inputs"]), output_names=about["outputs"], opset_version=10)
    model = onnx.load_from_string(buffer.getvalue())
    helper.set_model_props(model, {IDENTIFIER_KEY: about["identifier"], "marrowby.model.purpose": CARD})
    onnx.checker.check_model(model)
    path = folder / about["file"]
    path.write_bytes(model.SerializeToString())
    return path


def described(values, weights) -> list[dict]:
    return [{"name": value.name, "shape": [max(0, size.dim_value) for size in value.type.tensor_type.shape.dim]}
            for value in values if value.name not in weights]


def write_manifest(folder: Path) -> None:
    """Describes the four files, as the standard pack's manifest does."""
    entries = []
    for role, about in ROLES.items():
        path = folder / about["file"]
        model = onnx.load(str(path))
        weights = {tensor.name for tensor in model.graph.initializer}
        entries.append({"role": role, "name": about["name"], "file": about["file"],
                        "identifier": about["identifier"], "licence": "the project's own",
                        "origin": "Simulation/Training/train",
                        "sha256": hashlib.sha256(path.read_bytes()).hexdigest(),
                        "inputs": described(model.graph.input, weights),
                        "outputs": described(model.graph.output, weights)})
    text = json.dumps({"name": "rehearsal", "version": 1, "models": entries}, indent=2)
    (folder / "pack.json").write_text(text + "\n", encoding="utf-8")
