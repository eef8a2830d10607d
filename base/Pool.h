// Pool<T, ChunkBlocks>: a free-list pool of blocks sized for T, allocated ChunkBlocks at a time.
#ifndef VESK_BASE_POOL_H
#define VESK_BASE_POOL_H

#include "init.h"

#include <cstddef>
#include <new>
#include <vector>

template <class T, int ChunkBlocks = 32> class Pool {
public:
    // First free block, or a block of a new chunk when the free list is empty.
    static void* allocate() {
        State& s = state();
        if (!s.free_list) {
            Block* chunk = static_cast<Block*>(::operator new(sizeof(Block) * ChunkBlocks));
            s.chunks.push_back(chunk);
            for (int i = ChunkBlocks - 1; i >= 0; --i) {
                chunk[i].next = s.free_list;
                s.free_list = &chunk[i];
            }
        }
        Block* b = s.free_list;
        s.free_list = b->next;
        return b;
    }

    // Pushes the block back on the free list.
    static void release(void* p) {
        if (!p)
            return;
        State& s = state();
        Block* b = static_cast<Block*>(p);
        b->next = s.free_list;
        s.free_list = b;
    }

    // Returns every chunk to the system; run at normal process end.
    static void free_all() {
        State& s = state();
        for (Block* c : s.chunks)
            ::operator delete(c);
        s.chunks.clear();
        s.free_list = nullptr;
    }

    static std::size_t block_size() { return sizeof(Block); }
    static std::size_t chunk_count() { return state().chunks.size(); }

private:
    union Block {
        Block* next;
        alignas(T) unsigned char storage[sizeof(T)];
    };

    struct State {
        State() { at_finish(&Pool::free_all); }
        Block* free_list = nullptr;
        std::vector<Block*> chunks;
    };

    // Never destroyed: free_all runs from the exit hooks, after static destructors.
    static State& state() {
        static State* s = new State;
        return *s;
    }
};

#endif
