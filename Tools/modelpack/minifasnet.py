# SPDX-License-Identifier: Apache-2.0
"""Merges the two published weight files of MiniFASNet into one model.

The weights are PyTorch's of 2020 (a pickle of names, then the numbers); reading them needs no PyTorch.
The network: https://github.com/minivision-ai/Silent-Face-Anti-Spoofing.
"""

import collections
import pickle
from pathlib import Path

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper

from .originals import Refusal

BATCH_NORM_EPSILON = 1e-5


class _Names(pickle.Unpickler):
    """An unpickler that only builds tensor descriptions, so that a hostile file can run no code."""

    def find_class(self, module, name):
        if (module, name) == ("collections", "OrderedDict"):
            return collections.OrderedDict
        if (module, name) == ("torch._utils", "_rebuild_tensor_v2"):
            return lambda storage, offset, shape, stride, *_: (storage, offset, shape, stride)
        if module == "torch" and name in ("FloatStorage", "LongStorage"):
            return name
        raise pickle.UnpicklingError(f"unexpected {module}.{name}")

    def persistent_load(self, pid):
        return pid  # ("storage", type, key, device, count, view)


def read_weights(path: Path) -> dict[str, np.ndarray]:
    types = {"FloatStorage": "<f4", "LongStorage": "<i8"}
    try:
        with open(path, "rb") as stream:
            for _ in range(3):  # magic number, version, machine
                _Names(stream).load()
            tensors = _Names(stream).load()
            storages = {}
            kinds = {entry[0][2]: entry[0][1] for entry in tensors.values()}
            for key in _Names(stream).load():
                count = int.from_bytes(stream.read(8), "little")
                kind = np.dtype(types[kinds[key]])
                storages[key] = np.frombuffer(stream.read(count * kind.itemsize), kind)
        weights = {}
        for name, (storage, offset, shape, stride) in tensors.items():
            values = storages[storage[2]][offset:offset + int(np.prod(shape))].reshape(shape)
            if tuple(step * values.itemsize for step in stride) != values.strides:
                raise ValueError(f"{name} is not laid out in rows")
            weights[name.removeprefix("module.")] = values
        return weights
    except (pickle.UnpicklingError, KeyError, ValueError, EOFError, TypeError) as fault:
        raise Refusal(f"{path.name} can’t be read as PyTorch weights: {fault}.") from fault


class Branch:
    """The nodes of one of the two networks, with batch normalisation folded into the convolutions."""

    def __init__(self, prefix: str, weights: dict[str, np.ndarray]):
        self.prefix, self.weights = prefix, weights
        self.nodes, self.initializers = [], []

    def node(self, kind: str, inputs: list[str], name: str, **attributes) -> str:
        output = f"{self.prefix}.{name}"
        self.nodes.append(helper.make_node(kind, inputs, [output], output, **attributes))
        return output

    def tensor(self, name: str, values: np.ndarray) -> str:
        name = f"{self.prefix}.{name}"
        self.initializers.append(numpy_helper.from_array(np.ascontiguousarray(values, np.float32), name))
        return name

    def scale_and_shift(self, norm: str) -> tuple[np.ndarray, np.ndarray]:
        w = {key: self.weights[f"{norm}.{key}"].astype(np.float64)
             for key in ("weight", "bias", "running_mean", "running_var")}
        scale = w["weight"] / np.sqrt(w["running_var"] + BATCH_NORM_EPSILON)
        return scale, w["bias"] - w["running_mean"] * scale

    def convolve(self, x: str, conv: str, norm: str, stride: int = 1, pad: int = 0) -> str:
        kernel = self.weights[f"{conv}.weight"].astype(np.float64)
        scale, shift = self.scale_and_shift(norm)
        groups = kernel.shape[0] if kernel.shape[1] == 1 and kernel.shape[2] > 1 else 1
        return self.node(
            "Conv", [x, self.tensor(f"{conv}.weight", kernel * scale[:, None, None, None]),
                     self.tensor(f"{conv}.bias", shift)], conv, group=groups,
            kernel_shape=list(kernel.shape[2:]), pads=[pad] * 4, strides=[stride] * 2)

    def block(self, x: str, name: str, stride: int = 1, pad: int = 0) -> str:
        """Convolution and its activation, if it has one."""
        x = self.convolve(x, f"{name}.conv", f"{name}.bn", stride, pad)
        if f"{name}.prelu.weight" not in self.weights:
            return x
        slope = self.tensor(f"{name}.slope", self.weights[f"{name}.prelu.weight"][:, None, None])
        return self.node("PRelu", [x, slope], f"{name}.prelu")

    def depthwise(self, x: str, name: str, stride: int) -> str:
        y = self.block(x, f"{name}.conv")
        y = self.block(y, f"{name}.conv_dw", stride, 1)
        y = self.block(y, f"{name}.project")
        attention = f"{name}.se_module"
        if f"{attention}.fc1.weight" not in self.weights:
            return y
        a = self.node("GlobalAveragePool", [y], f"{attention}.pool")
        a = self.node("Relu", [self.convolve(a, f"{attention}.fc1", f"{attention}.bn1")],
                      f"{attention}.relu")
        a = self.node("Sigmoid", [self.convolve(a, f"{attention}.fc2", f"{attention}.bn2")],
                      f"{attention}.sigmoid")
        return self.node("Mul", [y, a], f"{attention}.mul")

    def residuals(self, x: str, name: str) -> str:
        index = 0
        while f"{name}.model.{index}.conv.conv.weight" in self.weights:
            y = self.depthwise(x, f"{name}.model.{index}", 1)
            x = self.node("Add", [x, y], f"{name}.model.{index}.add")
            index += 1
        return x

    def build(self, x: str, output: str) -> None:
        x = self.block(x, "conv1", 2, 1)
        x = self.block(x, "conv2_dw", 1, 1)
        for wide, narrow in (("conv_23", "conv_3"), ("conv_34", "conv_4"), ("conv_45", "conv_5")):
            x = self.residuals(self.depthwise(x, wide, 2), narrow)
        x = self.block(x, "conv_6_sep")
        x = self.block(x, "conv_6_dw")
        x = self.node("Flatten", [x], "flat", axis=1)
        # Both layers and the normalisation between them are one linear map.
        scale, shift = self.scale_and_shift("bn")
        last = self.weights["prob.weight"].astype(np.float64)
        kernel = last @ (scale[:, None] * self.weights["linear.weight"].astype(np.float64))
        x = self.node("Gemm", [x, self.tensor("last.weight", kernel),
                               self.tensor("last.bias", last @ shift)], "last", transB=1)
        self.nodes.append(helper.make_node("Softmax", [x], [output], output, axis=1))


def fuse(path27: Path, path40: Path) -> onnx.ModelProto:
    branches = [Branch("branch27", read_weights(path27)), Branch("branch40", read_weights(path40))]
    try:
        for branch, crop, output in zip(branches, ("crop27", "crop40"),
                                        ("probabilities27", "probabilities40")):
            branch.build(crop, output)
    except KeyError as fault:
        raise Refusal(f"The weights of MiniFASNet lack {fault}.") from fault
    half = numpy_helper.from_array(np.array([0.5], np.float32), "half")
    mean = [helper.make_node("Add", ["probabilities27", "probabilities40"], ["sum"], "sum"),
            helper.make_node("Mul", ["sum", "half"], ["probabilities"], "probabilities")]

    def value(name, shape):
        return helper.make_tensor_value_info(name, TensorProto.FLOAT, shape)

    graph = helper.make_graph(
        [node for branch in branches for node in branch.nodes] + mean, "MiniFASNet",
        [value("crop27", [1, 3, 80, 80]), value("crop40", [1, 3, 80, 80])],
        [value(name, [1, 3]) for name in ("probabilities", "probabilities27", "probabilities40")],
        [tensor for branch in branches for tensor in branch.initializers] + [half])
    model = helper.make_model(graph, producer_name="prepare-pack",
                              opset_imports=[helper.make_opsetid("", 11)])
    model.ir_version = 6
    onnx.checker.check_model(model)
    return model
