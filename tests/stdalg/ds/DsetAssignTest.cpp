// DsetAssign and its iterators against brute-force row sets over a random table with missing values.
#include "ds/DsetAssign.h"
#include "ds/DsetAssignIter.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A random table: value -1 is missing. A variable may take fewer than 3 values; its value sets then
// have a null entry or stop short.
struct Table {
    int rows;
    std::vector<std::vector<int>> val; // [var][row]
    std::vector<std::vector<std::unique_ptr<ds_bitvec>>> owned;
    std::vector<DsetValueSets> sets;

    Table(int nrows, int nvars, std::mt19937& rng) : rows(nrows), val(nvars), owned(nvars), sets(nvars) {
        for (int v = 0; v < nvars; ++v) {
            const int card = 1 + static_cast<int>(rng() % 3);
            for (int r = 0; r < rows; ++r)
                val[v].push_back(rng() % 10 == 0 ? -1 : static_cast<int>(rng() % card));
            // Cardinality 2 is given short or with a null third entry, alternately.
            const int entries = (card == 2 && v % 2) ? 2 : 3;
            for (int x = 0; x < entries; ++x) {
                std::unique_ptr<ds_bitvec> s(new ds_bitvec(rows));
                for (int r = 0; r < rows; ++r)
                    if (val[v][r] == x)
                        s->set_ind(r);
                sets[v].push_back(s->on_bits() ? s.get() : nullptr);
                owned[v].push_back(std::move(s));
            }
        }
    }
};

// Rows matching every non-zero digit of `id` under the slot contents `slots`.
std::vector<int> brute_rows(const Table& t, const std::vector<int>& slots, int id, int bits) {
    std::vector<int> out;
    for (int r = 0; r < t.rows; ++r) {
        bool ok = true;
        for (std::size_t i = 0; i < slots.size() && ok; ++i) {
            const int d = (id >> (static_cast<int>(i) * bits)) & ((1 << bits) - 1);
            if (d != 0)
                ok = slots[i] != -1 && t.val[slots[i]][r] == d - 1;
        }
        if (ok)
            out.push_back(r);
    }
    return out;
}

std::vector<int> rows_of(const ds_bitvec* s) {
    std::vector<int> out;
    if (s)
        for (int r = 0; r < s->size(); ++r)
            if (s->get_ind(r))
                out.push_back(r);
    return out;
}

// Ids the iterator must visit: digit 0 is 0, the digits of the `shown` slots non-zero, all others 0,
// and at least one matching row; ascending.
std::vector<int> expected_walk(const Table& t, const std::vector<int>& slots, const std::vector<bool>& shown,
                               int size, int bits) {
    std::vector<int> out;
    for (int id = 0; id < size; ++id) {
        bool ok = (id & ((1 << bits) - 1)) == 0;
        for (std::size_t i = 1; i < slots.size() && ok; ++i) {
            const int d = (id >> (static_cast<int>(i) * bits)) & ((1 << bits) - 1);
            ok = shown[i] ? d != 0 : d == 0;
        }
        if (ok && !brute_rows(t, slots, id, bits).empty())
            out.push_back(id);
    }
    return out;
}

std::vector<int> walk(DsetAssignIter& it) {
    std::vector<int> out;
    for (bool ok = it.first(); ok; ok = ++it)
        out.push_back(it.cur());
    return out;
}

TEST(DsetAssign, RandomOperationsMatchBruteForce) {
    const std::uint32_t seed = test_seed(16016);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const int bits = 2, slots_n = 4, nvars = 9;
    Table t(200, nvars, rng);
    MultiDimIdSpace space(bits, slots_n);
    DsetAssign a(space, 3, slots_n, t.rows, false);
    std::vector<int> slots(slots_n, -1);
    // Filled slots from `from` on, leaving out those that hold variable `but`.
    auto filled = [&](int from, int but) {
        std::vector<int> out;
        for (int i = from; i < slots_n; ++i)
            if (slots[i] != -1 && slots[i] != but)
                out.push_back(i);
        return out;
    };

    for (int step = 0; step < 2500; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const int op = static_cast<int>(rng() % 10);
        const int var = static_cast<int>(rng() % nvars);
        if (op < 2) {
            a.insert_base_var(var, t.sets[var]);
            slots[0] = var;
        } else if (op < 5) {
            int want = -1;
            for (int i = 1; i < slots_n && want < 0; ++i)
                if (slots[i] == -1)
                    want = i;
            ASSERT_EQ(a.insert_var(var, t.sets[var]), want);
            if (want >= 0)
                slots[want] = var;
        } else if (op < 7) {
            const int slot = static_cast<int>(rng() % slots_n);
            a.insert_var_at(var, t.sets[var], slot);
            slots[slot] = var;
        } else if (op < 9) {
            const std::vector<int> any = filled(0, -1);
            if (any.empty())
                continue;
            const int slot = any[rng() % any.size()];
            if (slot > 0 && rng() % 2) {
                // remove_var takes the first slot from 1 that holds the variable.
                const int v = slots[slot];
                a.remove_var(v);
                for (int i = 1; i < slots_n; ++i)
                    if (slots[i] == v) {
                        slots[i] = -1;
                        break;
                    }
            } else {
                a.remove_i_var(slot);
                slots[slot] = -1;
            }
        } else if (rng() % 4 == 0) {
            a.clear();
            std::fill(slots.begin(), slots.end(), -1);
        }
        ASSERT_TRUE(a.verify());
        ASSERT_EQ(a.m_vars, slots);
        for (int id = 0; id < space.m_size; ++id) {
            if (static_cast<unsigned int>(id) & ~a.m_active)
                continue;
            ASSERT_EQ(rows_of(a.set_of(id)), brute_rows(t, slots, id, bits)) << "id " << id;
        }
        if (slots[0] == -1)
            continue;
        std::vector<bool> shown(slots_n);
        for (int i = 1; i < slots_n; ++i)
            shown[i] = slots[i] != -1;
        DsetAssignIter it(a);
        ASSERT_EQ(walk(it), expected_walk(t, slots, shown, space.m_size, bits));
        // Hiding works on parents; the base variable is never hidden.
        const std::vector<int> parents = filled(1, slots[0]);
        if (!parents.empty() && step % 5 == 0) {
            const int hidden_slot = parents[rng() % parents.size()];
            std::vector<bool> hshown = shown;
            for (int i = 1; i < slots_n; ++i)
                if (slots[i] == slots[hidden_slot])
                    hshown[i] = false;
            DsetAssignIterHide hide(a, {slots[hidden_slot], nvars + 5});
            ASSERT_EQ(walk(hide), expected_walk(t, slots, hshown, space.m_size, bits));
            hide.restart(a);
            ASSERT_EQ(walk(hide), expected_walk(t, slots, hshown, space.m_size, bits));
        }
    }
}

// Two binary variables written out by hand: x = 0 0 1 1 1, y = 0 1 0 1 1.
TEST(DsetAssign, MissingValuesHaveNoSetAndFullSlotsRefuse) {
    MultiDimIdSpace space(2, 3);
    DsetAssign a(space, 3, 3, 5, false);
    auto rows = [](std::initializer_list<int> on) {
        ds_bitvec v(5);
        for (int r : on)
            v.set_ind(r);
        return v;
    };
    ds_bitvec x0 = rows({0, 1}), x1 = rows({2, 3, 4}), y0 = rows({0, 2}), y1 = rows({1, 3, 4}), none(5);
    EXPECT_EQ(a.count_of(0), 5);
    a.insert_base_var(7, {&x0, &x1});
    EXPECT_EQ(a.set_of(3), nullptr); // no third value
    EXPECT_EQ(a.insert_var(8, {&y0, &y1, &none}), 1);
    // The empty third value of the parent (digit 3 of slot 1) makes no set; the random run checks
    // the rows of every id.
    EXPECT_EQ(a.set_of(12), nullptr);
    std::ostringstream dump;
    a.dump_state(dump);
    EXPECT_NE(dump.str().find("slot 1 var 8"), std::string::npos);
    // Full slots: -1 and nothing changes.
    a.insert_var(9, {&x0, &x1});
    EXPECT_EQ(a.insert_var(10, {&y1, &y0}), -1);
    EXPECT_EQ(a.m_vars, (std::vector<int>{7, 8, 9}));
    EXPECT_EQ(a.m_count, 3);
}

TEST(MultiDimIdSpace, MasksPartialIdsAndDigits) {
    MultiDimIdSpace s(2, 3);
    EXPECT_EQ(s.m_size, 64);
    EXPECT_EQ(s.m_masks, (std::vector<unsigned int>{3u, 12u, 48u}));
    EXPECT_EQ(s.m_anti_masks[1], ~12u);
    int full = 0;
    for (int id = 0; id < 64; ++id) {
        const bool any_zero = (id & 3) == 0 || (id & 12) == 0 || (id & 48) == 0;
        EXPECT_EQ(s.m_partial.get_ind(id), any_zero) << id;
        full += !any_zero;
    }
    EXPECT_EQ(full, 27);
    std::ostringstream out;
    s.print_multiid(out, 1 + (2 << 2) + (3 << 4));
    EXPECT_EQ(out.str(), "1 2 3 ");
    DValueSet v(&s);
    EXPECT_EQ(v.get_multi_id(), 0);
    v.m_digits[0] = 2;
    v.m_digits[2] = 1;
    EXPECT_EQ(v.get_multi_id(), 2 + 16);
}

TEST(DsetAssignDeath, RemovingAbsentVariables) {
    MultiDimIdSpace space(2, 3);
    DsetAssign a(space, 3, 3, 4, false);
    ds_bitvec all(4);
    all.set(true);
    a.insert_base_var(3, {&all});
    const struct {
        void (*op)(DsetAssign&);
        const char* re;
    } cases[] = {
        {[](DsetAssign& d) { d.remove_i_var(2); },
         R"(ds/DsetAssign\([0-9]+\): Try to remove_i_var i=2 with no var there)"},
        {[](DsetAssign& d) { d.remove_var(3); },
         R"(ds/DsetAssign\([0-9]+\): Try removing non existing var, id 3)"},
        {[](DsetAssign& d) {
             d.remove_base_var();
             d.remove_base_var();
         },
         R"(ds/DsetAssign\([0-9]+\): Try to remove_i_var i=0 with no var there)"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(c.op(a), c.re);
}

} // namespace
