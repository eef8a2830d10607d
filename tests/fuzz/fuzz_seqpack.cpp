// Fuzzer of the sequence readers over a universe of eight genes (Gene0 ... Gene7): with a first byte
// 'k' the PSSM tables (pssmk NUL pssmd, counts then log-odds rows), with 'f' a promoter FASTA read
// into both promoter forms.
#include "DnaSeqGenomePromoters.h"
#include "FuzzHarness.h"
#include "PssmSet.h"
#include "VarUniverse.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    fuzz_run([&] {
        static VarUniverse* universe = [] {
            VarUniverse* u = new VarUniverse();
            u->init_idspace(8);
            return u;
        }();
        const std::vector<std::string> t = fuzz_split(data + 1, size - 1, 2);
        if (data[0] == 'k') {
            PssmSet set;
            std::istringstream k(t[0]), d(t[1]), k2(t[0]), d2(t[1]);
            set.read(k, d, 10, 0, 0.5f, false);
            set.read(k2, d2, 0, 1, 0.0f, true);
        } else if (data[0] == 'f') {
            std::istringstream a(t[0]), b(t[0]);
            DnaSeqGenomePromoters<DnaSequence> letters;
            letters.read_fasta(40, *universe, a, false, false);
            DnaSeqGenomePromoters<DnaDenseSequence> dense;
            dense.read_fasta(40, *universe, b, true, true);
        }
    });
    return 0;
}
