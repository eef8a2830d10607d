// ClassMembers against VarClasses on the same tables: same classes, names, keys, members, traces and fatals.
#include "ClassMembers.h"
#include "VarClasses.h"
#include "ds/BitVecIter.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

TEST(ClassMembers, ReadsWhatVarClassesReads) {
    const std::uint32_t seed = test_seed(77);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return static_cast<int>(rng() % n); };
    for (int rep = 0; rep < 200; ++rep) {
        const int n = 1 + pick(300);
        std::ostringstream keys, assoc;
        const int n_classes = 1 + pick(30);
        for (int i = 0; i < n_classes; ++i) {
            // Ids in any order, holes, repeats that overwrite.
            const int id = pick(n_classes + 5);
            keys << id << "\tK" << id << "_" << i << "\tname with blanks " << i << "\t" << pick(9) << "\n";
        }
        std::istringstream kin0(keys.str()), none;
        VarClasses probe;
        quiet([&] { probe.read(kin0, none, n, nullptr); });
        for (int i = 0; i < 200 && probe.class_count() > 0; ++i)
            assoc << pick(probe.class_count()) << " " << (pick(20) == 0 ? n + pick(5) : pick(n)) << "\n";
        const bool masked = pick(2);
        ds_bitvec mask(n);
        for (int g = 0; g < n; ++g)
            if (pick(3))
                mask.set_ind(g);
        std::string text = assoc.str();
        if (masked) { // a masked read tests every variable against the mask's width: keep them inside
            std::istringstream in(text);
            std::ostringstream kept;
            int c, v;
            while (in >> c >> v)
                if (v < n)
                    kept << c << " " << v << "\n";
            text = kept.str();
        }
        const ds_bitvec* m = masked ? &mask : nullptr;

        VarClasses vc;
        ClassMembers cm;
        std::istringstream k1(keys.str()), a1(text), k2(keys.str()), a2(text);
        const std::string vc_err = quiet([&] { vc.read(k1, a1, n, m); });
        const std::string cm_err = quiet([&] { cm.read(k2, a2, n, m); });
        ASSERT_EQ(vc_err, cm_err) << "case " << rep;
        ASSERT_EQ(vc.class_count(), cm.class_count()) << "case " << rep;
        EXPECT_EQ(vc.m_class_names, cm.m_class_names);
        EXPECT_EQ(vc.m_class_keys, cm.m_class_keys);
        ClassMembers from_bits;
        from_bits.assign(vc);
        for (int c = 0; c < vc.class_count(); ++c) {
            std::vector<int> bits;
            for (ds_bitvec_iter it(vc.m_class_bits[c]); it; ++it)
                bits.push_back(it);
            ASSERT_EQ(bits, cm.m_members[c]) << "case " << rep << " class " << c;
            ASSERT_EQ(bits, from_bits.m_members[c]);
            for (int g = 0; g < n; ++g)
                ASSERT_EQ(vc.m_class_bits[c].get_ind(g), cm.holds(c, g)) << "class " << c << " gene " << g;
        }
    }
}

namespace {

template <class Classes> void read_form(const char* assoc_text, const ds_bitvec* mask) {
    std::istringstream keys("0\tA\ta\t0\n1\tB\tb\t0\n"), assoc(assoc_text);
    Classes classes;
    classes.read(keys, assoc, 10, mask);
}

} // namespace

TEST(ClassMembersDeathTest, SameFatalsAsVarClasses) {
    // A class id past the key table; a masked variable outside the mask's width.
    const struct {
        const char* assoc;
        bool masked;
        const char* pattern;
    } cases[] = {
        {"0 1\n5 2\n", false, R"(Class 5 size 2[[:space:]]+vesk\([0-9]+\): Table id mismatch)"},
        {"0 1\n-1 2\n", true, R"(Class -1 size 2[[:space:]]+vesk\([0-9]+\): Table id mismatch)"},
        {"1 40\n", true, R"(ds/BitVec\([0-9]+\): Bit index 40 out of bounds \[0\.\.10\))"},
    };
    for (const auto& c : cases) {
        ds_bitvec mask(10);
        mask.set(true);
        const ds_bitvec* m = c.masked ? &mask : nullptr;
        EXPECT_DEATH(read_form<VarClasses>(c.assoc, m), c.pattern) << c.assoc;
        EXPECT_DEATH(read_form<ClassMembers>(c.assoc, m), c.pattern) << c.assoc;
    }
    // A key id outside the bound, negative or past the ceiling.
    for (const char* key : {"0\ta\tb\t0\n-1\tc\td\t0\n", "4194304\ta\tb\t0\n"}) {
        const std::string row = key[0] == '0' ? "-1 in key row 2" : "4194304 in key row 1";
        const std::string pattern = R"(vesk\([0-9]+\): Bad class id )" + row;
        std::istringstream k1(key), k2(key), none1, none2;
        EXPECT_DEATH(VarClasses().read(k1, none1, 10, nullptr), pattern);
        EXPECT_DEATH(ClassMembers().read(k2, none2, 10, nullptr), pattern);
    }
}
