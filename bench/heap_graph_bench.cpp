// Benchmarks of the optimisers' heap churn (change + extract_min) and of edge insertion, removal
// and neighbourhood iteration on a graph of about a million edges.
#include "ds/CompHeap.h"
#include "ds/GraphWeb.h"
#include "ds/HeapBin.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

namespace {

double key_of(std::mt19937& rng) { return static_cast<double>(rng() % 100000) * 0.01 - 500.0; }

// Keys move up and down at random; every fourth step the minimum is taken and put back, as a
// greedy search does when it applies its best move.
void BM_HeapChangeExtract(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::mt19937 rng(1);
    HeapBin h;
    for (int id = 0; id < n; ++id)
        h.insert(id, key_of(rng));
    std::int64_t ops = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1024; ++i) {
            const int id = static_cast<int>(rng() % static_cast<unsigned>(n));
            if (h.is_used(id))
                h.change(id, key_of(rng));
            if ((i & 3) == 0) {
                double k = 0;
                const int m = h.extract_min(k);
                h.insert(m, k + 1.0);
            }
        }
        ops += 1024;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_HeapChangeExtract)->Arg(1000)->Arg(100000);

// The optimiser's layout: add and delete sub-heaps per bin plus one for conditions; bin weights
// move as the bicluster changes.
void BM_CompHeapChurn(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const int bins = 10, heaps = 2 * bins + 1;
    std::mt19937 rng(2);
    CompHeap<HeapBin> c;
    std::vector<int> heap_of(n);
    for (int id = 0; id < n; ++id) {
        heap_of[id] = static_cast<int>(rng() % heaps);
        c.insert(heap_of[id], id, key_of(rng));
    }
    std::int64_t ops = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1024; ++i) {
            const int id = static_cast<int>(rng() % static_cast<unsigned>(n));
            if (c.is_used(heap_of[id], id))
                c.change(heap_of[id], id, key_of(rng));
            if ((i & 15) == 0)
                c.set_subheap_wgt(static_cast<int>(rng() % heaps), static_cast<float>(key_of(rng) * 0.1));
            if ((i & 3) == 0) {
                const int h = c.get_min_heap();
                double k = 0;
                const int m = c.extract_min(k);
                c.insert(h, m, k - c.get_subheap_wgt(h) + 1.0);
            }
        }
        ops += 1024;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_CompHeapChurn)->Arg(100000);

constexpr int kNodes = 20000;
constexpr int kEdges = 1000000;

void fill(GraphWeb& g, std::mt19937& rng) {
    for (int i = 0; i < kEdges; ++i)
        g.insert_edge(static_cast<int>(rng() % kNodes), static_cast<int>(rng() % kNodes), -1);
}

void BM_GraphInsertEdges(benchmark::State& state) {
    std::int64_t ops = 0;
    for (auto _ : state) {
        std::mt19937 rng(3);
        GraphWeb g(kNodes, state.range(0) != 0);
        fill(g, rng);
        benchmark::DoNotOptimize(g.edges_num());
        ops += kEdges;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_GraphInsertEdges)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// A full graph kept at a million edges: remove a random edge, insert a new one.
void BM_GraphRemoveInsert(benchmark::State& state) {
    std::mt19937 rng(4);
    GraphWeb g(kEdges, false);
    fill(g, rng);
    std::vector<int> live(kEdges);
    for (int i = 0; i < kEdges; ++i)
        live[i] = i;
    std::int64_t ops = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1024; ++i) {
            const unsigned at = rng() % kEdges;
            g.remove_edge(live[at]);
            live[at] = g.insert_edge(static_cast<int>(rng() % kNodes), static_cast<int>(rng() % kNodes), -1);
        }
        ops += 1024;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_GraphRemoveInsert);

// Every node's edges in direction 1 (out), 2 (in) or 3 (both): one pass over the whole graph.
void BM_GraphIterate(benchmark::State& state) {
    static std::unique_ptr<GraphWeb> g;
    if (!g) {
        std::mt19937 rng(5);
        g.reset(new GraphWeb(kEdges, false));
        fill(*g, rng);
    }
    const GraphBaseEdgeIter::Direction dir = static_cast<GraphBaseEdgeIter::Direction>(state.range(0));
    std::int64_t ops = 0;
    for (auto _ : state) {
        long sum = 0;
        std::unique_ptr<GraphBaseNodeIter> nodes(g->new_node_iter());
        std::unique_ptr<GraphBaseEdgeIter> edges(g->new_edge_iter(-1, dir));
        for (; !nodes->at_end(); ++*nodes) {
            edges->restart(nodes->node());
            for (; !edges->at_end(); ++*edges)
                sum += edges->other();
        }
        benchmark::DoNotOptimize(sum);
        ops += dir == GraphBaseEdgeIter::Both ? 2 * kEdges : kEdges;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_GraphIterate)->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMillisecond);

// The same walk over out-lists when each source's edges were inserted together (as a graph read
// node by node is built): the cells of one list are neighbours in memory.
void BM_GraphIterateGrouped(benchmark::State& state) {
    static std::unique_ptr<GraphWeb> g;
    if (!g) {
        std::mt19937 rng(6);
        g.reset(new GraphWeb(kEdges, false));
        const int per_node = kEdges / kNodes;
        for (int s = 0; s < kNodes; ++s)
            for (int k = 0; k < per_node; ++k)
                g->insert_edge(s, static_cast<int>(rng() % kNodes), -1);
    }
    std::int64_t ops = 0;
    for (auto _ : state) {
        long sum = 0;
        std::unique_ptr<GraphBaseNodeIter> nodes(g->new_node_iter());
        std::unique_ptr<GraphBaseEdgeIter> edges(g->new_edge_iter(-1, GraphBaseEdgeIter::Out));
        for (; !nodes->at_end(); ++*nodes) {
            edges->restart(nodes->node());
            for (; !edges->at_end(); ++*edges)
                sum += edges->other();
        }
        benchmark::DoNotOptimize(sum);
        ops += kEdges;
    }
    state.SetItemsProcessed(ops);
}
BENCHMARK(BM_GraphIterateGrouped)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
