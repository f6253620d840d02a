# SPDX-License-Identifier: Apache-2.0
"""The models that the application expects on a Mac, and their conversion with coremltools."""

import importlib
import shutil
import sys
import tempfile
from dataclasses import asdict, dataclass
from pathlib import Path

from .originals import Refusal

IDENTIFIER_KEY = "marrowby.model.identifier"
# A version of coremltools, a Python version that it is published for, and its native libraries: they write weights,
# write packages, and run models.
COREMLTOOLS, PYTHON = "9.0", "3.12"
NATIVE = ["libmilstoragepython", "libmodelpackage", "libcoremlpython"]


@dataclass(frozen=True)
class Image:
    """An image input of values 0…255 in this channel order."""
    name: str
    width: int
    height: int
    colour_layout: str
    scale: float = 1.0
    bias: tuple[float, float, float] = (0.0, 0.0, 0.0)

    @property
    def shape(self):
        return (1, 3, self.height, self.width)


@dataclass(frozen=True)
class Contract:
    """What the application requires of one model."""
    name: str
    identifier: str
    inputs: list[Image]
    #: Number of values by name.
    outputs: dict[str, int]

    @property
    def source(self) -> str:
        return self.name + ".onnx"

    @property
    def file(self) -> str:
        return self.name + ".mlmodelc"

    @property
    def metadata(self) -> dict[str, str]:
        return {IDENTIFIER_KEY: self.identifier}

    def described(self) -> dict:
        return asdict(self) | {"file": self.file, "metadata": self.metadata}


CONTRACTS = [
    Contract("SFace", "sface-2021dec-coreml-1", [Image("image", 112, 112, "RGB")], {"embedding": 128}),
    Contract("MiniFASNet", "minifasnet-2020jul-coreml-1",
             [Image("crop27", 80, 80, "BGR"), Image("crop40", 80, 80, "BGR")],
             {"probabilities": 3, "probabilities27": 3, "probabilities40": 3}),
]


def check(contract: Contract, model) -> None:
    """Raises Refusal if an ONNX model does not match the contract."""
    found = {entry.key: entry.value for entry in model.metadata_props}.get(IDENTIFIER_KEY, "missing")
    if found != contract.identifier:
        raise Refusal(f"{contract.source} says that it is {found}, not {contract.identifier}.")

    def shapes(values):
        return {value.name: tuple(side.dim_value for side in value.type.tensor_type.shape.dim)
                for value in values}
    weights = {tensor.name for tensor in model.graph.initializer}
    inputs = {name: shape for name, shape in shapes(model.graph.input).items() if name not in weights}
    if inputs != {image.name: image.shape for image in contract.inputs}:
        raise Refusal(f"{contract.source} takes other inputs than the application gives.")
    if shapes(model.graph.output) != {name: (1, count) for name, count in contract.outputs.items()}:
        raise Refusal(f"{contract.source} gives other outputs than the application reads.")


def tools() -> None:
    """Raises Refusal, with what to install, if the models can’t be made on this machine."""
    if sys.platform != "darwin":
        raise Refusal("Core ML’s models can be compiled and tried on a Mac only.")
    install = f"python3 -m pip install coremltools=={COREMLTOOLS} onnx pillow numpy"
    for name in ("coremltools", "onnx", "PIL", "numpy"):
        try:
            importlib.import_module(name)
        except ImportError as error:
            raise Refusal(f"{error.name} is missing: {install}") from None
    # With another Python version it can be installed and imported without these libraries, and only fails at the end.
    for name in NATIVE:
        try:
            importlib.import_module(f"coremltools.{name}")
        except ImportError as error:
            found = ".".join(map(str, sys.version_info[:2]))
            raise Refusal(
                f"coremltools can’t load its native library in Python {found} ({error}). Install Python {PYTHON}, for "
                f"which it has one: brew install python@{PYTHON} && python{PYTHON} -m venv venv && "
                f". venv/bin/activate && {install}") from None


def convert(contract: Contract, network: list):
    """Builds a Core ML model from the steps of an ONNX model."""
    import coremltools
    from coremltools.converters.mil import Builder

    def body(*images):
        known = dict(zip((image.name for image in contract.inputs), images))
        for place, step in enumerate(network):
            # Only the outputs' names matter.
            name = step.result if step.result in contract.outputs else f"step{place}"
            values = {key: known[value] for key, value in step.values.items()}
            known[step.result] = getattr(Builder, step.operation)(**values, **step.constants, name=name)
        return tuple(known[name] for name in contract.outputs)

    # The builder takes the input names from the function's parameters.
    functions = {("image",): lambda image: body(image),
                 ("crop27", "crop40"): lambda crop27, crop40: body(crop27, crop40)}
    target = coremltools.target.macOS13
    program = Builder.program(
        input_specs=[Builder.TensorSpec(shape=image.shape) for image in contract.inputs],
        opset_version=target)(functions[tuple(image.name for image in contract.inputs)])
    model = coremltools.convert(
        program, convert_to="mlprogram", minimum_deployment_target=target,
        # The Neural Engine's precision.
        compute_precision=coremltools.precision.FLOAT16, compute_units=coremltools.ComputeUnit.ALL,
        inputs=[coremltools.ImageType(name=image.name, shape=image.shape, scale=image.scale,
                                      bias=list(image.bias), channel_first=True,
                                      color_layout=getattr(coremltools.colorlayout, image.colour_layout))
                for image in contract.inputs])
    model.user_defined_metadata.update(contract.metadata)
    return model


def largest_difference(contract: Contract, model, network: list) -> float:
    """Compares the model with its steps on a synthetic picture: the largest difference over the largest value. Needs a
    Mac."""
    import numpy as np
    from PIL import Image as Picture

    from .steps import run

    pictures, values = {}, {}
    for image in contract.inputs:
        channel, y, x = np.mgrid[:3, :image.height, :image.width]
        rgb = (channel * 79 + y * 31 + x * 17 + (x * y) % 29 * 3) % 256
        pictures[image.name] = Picture.fromarray(rgb.transpose(1, 2, 0).astype(np.uint8))
        ordered = rgb if image.colour_layout == "RGB" else rgb[::-1]
        values[image.name] = ordered[np.newaxis].astype(np.float32)
    expected = run(network, values)
    found = model.predict(pictures)
    return max(float(np.abs(found[name] - expected[name]).max() / np.abs(expected[name]).max())
               for name in contract.outputs)


def compile_model(contract: Contract, model, folder: Path) -> Path:
    """Writes the compiled model into the folder. Needs a Mac."""
    from coremltools.models.utils import compile_model as compiled

    target = folder / contract.file
    with tempfile.TemporaryDirectory() as temporary:
        package = Path(temporary) / f"{contract.name}.mlpackage"
        model.save(str(package))
        made = compiled(str(package))
        shutil.rmtree(target, ignore_errors=True)
        shutil.move(made, target)
    return target
