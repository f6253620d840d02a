# SPDX-License-Identifier: Apache-2.0
"""Translates an ONNX graph into Core ML operations, and evaluates these with NumPy."""

from dataclasses import dataclass

import numpy as np
import onnx
from numpy.lib.stride_tricks import sliding_window_view
from onnx import numpy_helper

from .originals import Refusal


@dataclass
class Step:
    """One operation and the name of its result. `values`: arguments by the names of inputs or earlier
    results; `constants`: constant arguments."""
    operation: str
    result: str
    values: dict[str, str]
    constants: dict


def steps(model: onnx.ModelProto) -> list[Step]:
    return _Reader(model.graph).read()


class _Reader:
    def __init__(self, graph: onnx.GraphProto):
        self.graph = graph
        self.weights = {tensor.name: numpy_helper.to_array(tensor) for tensor in graph.initializer}
        self.steps: list[Step] = []
        self.same: dict[str, str] = {}
        self.ranks = {value.name: len(value.type.tensor_type.shape.dim) for value in graph.input}

    def read(self) -> list[Step]:
        for node in self.graph.node:
            read = getattr(self, "read_" + node.op_type, None)
            if read is None:
                raise Refusal(f"The network has an operation that can’t be converted: {node.op_type}.")
            read(node, {each.name: onnx.helper.get_attribute_value(each) for each in node.attribute})
        return self.steps

    def add(self, operation, result, values, rank=None, **constants):
        values = {key: self.same.get(name, name) for key, name in values.items()}
        self.ranks[result] = rank or self.ranks[next(iter(values.values()))]
        self.steps.append(Step(operation, result, values, constants))

    def weight(self, node, place, otherwise=None):
        return self.weights[node.input[place]] if place < len(node.input) else otherwise

    def read_Constant(self, node, attributes):
        self.weights[node.output[0]] = numpy_helper.to_array(attributes["value"])

    def read_Identity(self, node, _):
        self.same[node.output[0]] = self.same.get(node.input[0], node.input[0])
        self.ranks[node.output[0]] = self.ranks[node.input[0]]

    read_Dropout = read_Identity

    def read_Conv(self, node, attributes):
        weight = self.weight(node, 1)
        if weight.ndim != 4 or attributes.get("auto_pad", b"NOTSET") != b"NOTSET":
            raise Refusal("The network has a convolution that can’t be converted.")
        top, left, bottom, right = attributes.get("pads", [0] * 4)
        self.add("conv", node.output[0], {"x": node.input[0]}, weight=weight,
                 bias=self.weight(node, 2, np.zeros(len(weight), np.float32)),
                 strides=list(attributes.get("strides", [1, 1])), pad_type="custom",
                 pad=[top, bottom, left, right], dilations=list(attributes.get("dilations", [1, 1])),
                 groups=attributes.get("group", 1))

    def read_BatchNormalization(self, node, attributes):
        scale, shift, mean, variance = (self.weight(node, place) for place in range(1, 5))
        factor = scale / np.sqrt(variance + np.float32(attributes.get("epsilon", 1e-5)))
        shape = [1, -1] + [1] * (self.ranks[node.input[0]] - 2)
        scaled = node.output[0] + ".scaled"
        self.add("mul", scaled, {"x": node.input[0]}, y=factor.reshape(shape))
        self.add("add", node.output[0], {"x": scaled}, y=(shift - mean * factor).reshape(shape))

    def read_PRelu(self, node, _):
        slope = self.weight(node, 1).reshape(-1)
        if slope.size == 1:
            self.add("leaky_relu", node.output[0], {"x": node.input[0]}, alpha=float(slope[0]))
        else:
            self.add("prelu", node.output[0], {"x": node.input[0]}, alpha=slope)

    def read_Relu(self, node, _):
        self.add("relu", node.output[0], {"x": node.input[0]})

    def read_Sigmoid(self, node, _):
        self.add("sigmoid", node.output[0], {"x": node.input[0]})

    def read_Clip(self, node, attributes):
        if not {"min", "max"} <= attributes.keys():
            raise Refusal("The network has a limit that can’t be converted.")
        self.add("clip", node.output[0], {"x": node.input[0]}, alpha=attributes["min"],
                 beta=attributes["max"])

    def read_Softmax(self, node, attributes):
        self.add("softmax", node.output[0], {"x": node.input[0]}, axis=attributes.get("axis", 1))

    def read_GlobalAveragePool(self, node, _):
        self.add("reduce_mean", node.output[0], {"x": node.input[0]}, axes=[2, 3], keep_dims=True)

    def read_Flatten(self, node, attributes):
        self.add("flatten2d", node.output[0], {"x": node.input[0]}, rank=2,
                 axis=attributes.get("axis", 1))

    def read_Reshape(self, node, _):
        shape = [int(side) for side in self.weight(node, 1)]
        self.add("reshape", node.output[0], {"x": node.input[0]}, rank=len(shape), shape=shape)

    def read_Gemm(self, node, attributes):
        weight = self.weight(node, 1) * np.float32(attributes.get("alpha", 1))
        weight = weight if attributes.get("transB", 0) else weight.T
        bias = self.weight(node, 2, np.zeros(len(weight), np.float32)).reshape(-1)
        if attributes.get("transA", 0) or bias.size != len(weight):
            raise Refusal("The network has a product that can’t be converted.")
        self.add("linear", node.output[0], {"x": node.input[0]}, weight=np.ascontiguousarray(weight),
                 bias=bias * np.float32(attributes.get("beta", 1)))

    def read_MatMul(self, node, _):
        weight = np.ascontiguousarray(self.weight(node, 1).T)
        self.add("linear", node.output[0], {"x": node.input[0]}, weight=weight,
                 bias=np.zeros(len(weight), np.float32))

    def arithmetic(self, operation, node):
        ends = dict(zip("xy", node.input))
        self.add(operation, node.output[0],
                 {key: name for key, name in ends.items() if name not in self.weights},
                 **{key: self.weights[name] for key, name in ends.items() if name in self.weights})

    def read_Add(self, node, _):
        self.arithmetic("add", node)

    def read_Sub(self, node, _):
        self.arithmetic("sub", node)

    def read_Mul(self, node, _):
        self.arithmetic("mul", node)

    def read_Div(self, node, _):
        self.arithmetic("real_div", node)


def run(network: list[Step], inputs: dict[str, np.ndarray]) -> dict[str, np.ndarray]:
    """All results by name, as 32-bit floats."""
    known = dict(inputs)
    for step in network:
        values = {key: known[name] for key, name in step.values.items()}
        known[step.result] = _OPERATIONS[step.operation](**values, **step.constants)
    return known


def _conv(x, weight, bias, strides, pad_type, pad, dilations, groups):
    del pad_type
    top, bottom, left, right = pad
    height, width = ((side - 1) * step + 1 for side, step in zip(weight.shape[2:], dilations))
    padded = np.pad(x[0], ((0, 0), (top, bottom), (left, right)))
    windows = sliding_window_view(padded, (height, width), (1, 2))
    windows = windows[:, ::strides[0], ::strides[1], ::dilations[0], ::dilations[1]]
    results = [np.tensordot(kernels, part, ((1, 2, 3), (0, 3, 4))) for kernels, part in
               zip(np.split(weight, groups), np.split(windows, groups))]
    return np.concatenate(results)[np.newaxis] + bias.reshape(1, -1, 1, 1)


def _softmax(x, axis):
    powers = np.exp(x - x.max(axis, keepdims=True))
    return powers / powers.sum(axis, keepdims=True)


_OPERATIONS = {
    "add": lambda x, y: x + y,
    "sub": lambda x, y: x - y,
    "mul": lambda x, y: x * y,
    "real_div": lambda x, y: x / y,
    "conv": _conv,
    "linear": lambda x, weight, bias: x @ weight.T + bias,
    "relu": lambda x: np.maximum(x, 0),
    "leaky_relu": lambda x, alpha: np.where(x < 0, x * np.float32(alpha), x),
    "prelu": lambda x, alpha: np.where(x < 0, x * alpha.reshape(1, -1, 1, 1), x),
    "sigmoid": lambda x: 1 / (1 + np.exp(-x)),
    "clip": lambda x, alpha, beta: np.clip(x, alpha, beta),
    "softmax": _softmax,
    "reduce_mean": lambda x, axes, keep_dims: x.mean(tuple(axes), keepdims=keep_dims),
    "flatten2d": lambda x, axis: x.reshape(int(np.prod(x.shape[:axis])), -1),
    "reshape": lambda x, shape: x.reshape(shape),
}
