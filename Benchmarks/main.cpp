// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks/Material.h"

#include <QCoreApplication>
#include <filesystem>
#include <string_view>

#include <benchmark/benchmark.h>

/// marrowby-benchmarks MODELS PICTURES [OPTION…]: the folder of the models, that of the pictures or
/// nothing, and Google Benchmark's options.
int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) return 1;
    const std::filesystem::path models = arguments[1];
    const std::filesystem::path pictures = arguments[2];
    const QCoreApplication application(argumentCount, arguments);
    argumentCount -= 2;
    arguments[2] = arguments[0];
    arguments += 2;
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 1;
    marrowby::Material::open(models, pictures);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
