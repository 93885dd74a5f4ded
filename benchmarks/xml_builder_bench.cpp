// How fast XMLBuilder writes values, beside appending them byte by byte.

#include <benchmark/benchmark.h>

#include <string>

#include "lhxml/xml_builder.hpp"

namespace {

// Mostly plain text: one character of each hundred needs escaping.
std::string MakeValue() {
    std::string value;
    while (value.size() < size_t{64} * 1024) {
        value.append(49, 'x').append("&").append(50, 'y');
    }
    return value;
}

void XMLBuilderAddElement(benchmark::State& state) {
    const std::string value = MakeValue();
    for ([[maybe_unused]] auto _ : state) {
        paylodge::XMLBuilder builder;
        builder.AddElement("Memo", value);
        benchmark::DoNotOptimize(builder.GetText().data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(value.size()));
}
BENCHMARK(XMLBuilderAddElement);

void AppendByteByByte(benchmark::State& state) {
    const std::string value = MakeValue();
    for ([[maybe_unused]] auto _ : state) {
        std::string text;
        for (const char character : value) {
            if (character == '&') {
                text.append("&amp;");
            } else {
                text.push_back(character);
            }
            benchmark::ClobberMemory();
        }
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(value.size()));
}
BENCHMARK(AppendByteByByte);

}  // namespace
