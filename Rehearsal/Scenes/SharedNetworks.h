#pragma once

/// What the folder of published networks holds, which has no manifest.
namespace marrowby::sharednetworks {

inline constexpr const char* embedderFile = "Embedder128.onnx";
inline constexpr const char* embedderIdentifier = "mobilefacenet-128-test-1";
inline constexpr const char* realFaceFile = "MiniFASNet.onnx";
inline constexpr const char* finderFile = "face_detection_yunet_2023mar.onnx";
inline constexpr const char* landmarksFile = "Landmarks98.onnx";

}  // namespace marrowby::sharednetworks
