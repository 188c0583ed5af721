// SPDX-License-Identifier: MIT
// Integer-keyed multimaps of a thousand to a million entries: vertex numbers in no order, each
// once.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "knotwork/geometry/vert_data_index_table.h"
#if defined(KNOTWORK_HAVE_BOOST)
#include <boost/unordered_map.hpp>
#endif

namespace {

// One face of all three: the vertex table's is adapted, the standard one's taken as it is.
struct Knotwork {
  TvertDataIndexTable table;
  void insert(int key, int data) { std::ignore = table.insert(key, data); }
  int find(int key) { return *table.find(key); }
  void remove(int key) { table.remove(key); }
  long sum() {
    long total = 0;
    for (TvertDataIndexTable::Iterator it(table); !it.isDone(); it.next()) total += it.data();
    return total;
  }
};

template <class Map>
struct Standard {
  Map table;
  void insert(int key, int data) { table.emplace(key, data); }
  int find(int key) { return table.find(key)->second; }
  void remove(int key) { table.erase(table.find(key)); }
  long sum() {
    long total = 0;
    for (const auto& entry : table) total += entry.second;
    return total;
  }
};

std::vector<int> shuffledKeys(const benchmark::State& state) {
  std::vector<int> keys(static_cast<std::size_t>(state.range(0)));
  std::iota(keys.begin(), keys.end(), 0);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(11));
  return keys;
}

template <class Table>
std::unique_ptr<Table> filled(const std::vector<int>& keys) {
  auto table = std::make_unique<Table>();
  for (const int key : keys) table->insert(key, 2 * key);
  return table;
}

void countEntries(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

template <class Table>
void Insert(benchmark::State& state) {
  const std::vector<int> keys = shuffledKeys(state);
  for (auto _ : state) {
    auto table = filled<Table>(keys);
    benchmark::DoNotOptimize(table.get());
    state.PauseTiming();
    table.reset();
    state.ResumeTiming();
  }
  countEntries(state);
}

template <class Table>
void Find(benchmark::State& state) {
  const std::vector<int> keys = shuffledKeys(state);
  const auto table = filled<Table>(keys);
  std::vector<int> asked(keys);
  std::shuffle(asked.begin(), asked.end(), std::mt19937(12));
  for (auto _ : state) {
    long sum = 0;
    for (const int key : asked) sum += table->find(key);
    benchmark::DoNotOptimize(sum);
  }
  countEntries(state);
}

template <class Table>
void Remove(benchmark::State& state) {
  const std::vector<int> keys = shuffledKeys(state);
  std::vector<int> asked(keys);
  std::shuffle(asked.begin(), asked.end(), std::mt19937(12));
  for (auto _ : state) {
    state.PauseTiming();
    auto table = filled<Table>(keys);
    state.ResumeTiming();
    for (const int key : asked) table->remove(key);
    benchmark::DoNotOptimize(table.get());
  }
  countEntries(state);
}

template <class Table>
void Iterate(benchmark::State& state) {
  const auto table = filled<Table>(shuffledKeys(state));
  for (auto _ : state) benchmark::DoNotOptimize(table->sum());
  countEntries(state);
}

using Std = Standard<std::unordered_multimap<int, int>>;

void sizes(benchmark::internal::Benchmark* b) {
  b->ArgName("entries")->RangeMultiplier(10)->Range(1000, 1000000);
}

BENCHMARK(Insert<Knotwork>)->Apply(sizes);
BENCHMARK(Insert<Std>)->Apply(sizes);
BENCHMARK(Find<Knotwork>)->Apply(sizes);
BENCHMARK(Find<Std>)->Apply(sizes);
BENCHMARK(Remove<Knotwork>)->Apply(sizes);
BENCHMARK(Remove<Std>)->Apply(sizes);
BENCHMARK(Iterate<Knotwork>)->Apply(sizes);
BENCHMARK(Iterate<Std>)->Apply(sizes);

#if defined(KNOTWORK_HAVE_BOOST)
using Boost = Standard<boost::unordered_multimap<int, int>>;
BENCHMARK(Insert<Boost>)->Apply(sizes);
BENCHMARK(Find<Boost>)->Apply(sizes);
BENCHMARK(Remove<Boost>)->Apply(sizes);
BENCHMARK(Iterate<Boost>)->Apply(sizes);
#endif

}  // namespace
