// What values and signals cost by themselves, each beside the plain thing of the standard library
// that does part of its work: a shared pointer, an any, a list of functions under a mutex.
#include <benchmark/benchmark.h>

#include <any>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/utils/cowptr.h"
#include "orlixdataprocessingcore/utils/property.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace {

using namespace Orlix::DataProcessing;
using Core::Integer;
using Utils::COWPtr;
using Utils::Variant;

void COWPtr_Copy(benchmark::State& state) {
    const auto handle = COWPtr<Integer>::make(5);
    for (auto _ : state) {
        COWPtr<Integer> copy(handle);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(COWPtr_Copy);

void SharedPtr_Copy(benchmark::State& state) {
    const auto handle = std::make_shared<Integer>(5);
    for (auto _ : state) {
        std::shared_ptr<Integer> copy(handle);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(SharedPtr_Copy);

void COWPtr_WriteAlone(benchmark::State& state) {
    auto handle = COWPtr<Integer>::make(5);
    for (auto _ : state) {
        handle->set(std::int64_t{6});
        benchmark::DoNotOptimize(handle);
    }
}
BENCHMARK(COWPtr_WriteAlone);

void COWPtr_WriteShared(benchmark::State& state) {
    const auto original = COWPtr<Integer>::make(5);
    for (auto _ : state) {
        COWPtr<Integer> copy(original);
        copy->set(std::int64_t{6});
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(COWPtr_WriteShared);

void Variant_Make(benchmark::State& state) {
    for (auto _ : state) {
        Variant value(Integer(5));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(Variant_Make);

void Any_Make(benchmark::State& state) {
    for (auto _ : state) {
        std::any value(std::make_shared<Integer>(5));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(Any_Make);

void Variant_Read(benchmark::State& state) {
    const Variant value(Integer(5));
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.get<Integer>(true)->get());
    }
}
BENCHMARK(Variant_Read);

void Any_Read(benchmark::State& state) {
    const std::any value(std::make_shared<Integer>(5));
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::any_cast<const std::shared_ptr<Integer>&>(value)->get());
    }
}
BENCHMARK(Any_Read);

void Variant_HandleOut(benchmark::State& state) {
    const Variant value(Integer(5));
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.getCOW<Integer>(true));
    }
}
BENCHMARK(Variant_HandleOut);

// In and out again, as a node does with each value that it forwards.
void Property_PassOn(benchmark::State& state) {
    Utils::ResettableProperty<Integer> property;
    Variant value(Integer(5));
    for (auto _ : state) {
        property.takeOver(std::move(value));
        value = property.moveVariant();
    }
}
BENCHMARK(Property_PassOn);

void Signal_Emit(benchmark::State& state) {
    Utils::Signal<void()> signal;
    int calls = 0;
    for (std::int64_t slot = 0; slot < state.range(0); ++slot) {
        static_cast<void>(signal.connect([&] { benchmark::DoNotOptimize(++calls); }));
    }
    for (auto _ : state) {
        signal();
    }
}
BENCHMARK(Signal_Emit)->Arg(0)->Arg(1)->Arg(4);

// Without results, trackables, blocking or the log: the least that a list of functions costs if
// others may change it meanwhile.
void FunctionList_Emit(benchmark::State& state) {
    std::mutex mutex;
    std::vector<std::function<void()>> functions;
    int calls = 0;
    for (std::int64_t slot = 0; slot < state.range(0); ++slot) {
        functions.emplace_back([&] { benchmark::DoNotOptimize(++calls); });
    }
    for (auto _ : state) {
        std::vector<std::function<void()>> copies;
        {
            const std::lock_guard guard(mutex);
            copies = functions;
        }
        for (const auto& function : copies) {
            function();
        }
    }
}
BENCHMARK(FunctionList_Emit)->Arg(0)->Arg(1)->Arg(4);

}  // namespace

BENCHMARK_MAIN();
