// Fuzzer of the HMM readers: with a first byte 'f' a protein FASTA file and DNA and protein records,
// with 'a' the pair and profile alignment tables over 4 symbols (substitutions NUL pair
// transitions NUL profile transitions).
#include "FuzzHarness.h"
#include "ProfileAlign.h"
#include "SymbolSequence.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    fuzz_run([&] {
        const std::vector<std::string> t = fuzz_split(data + 1, size - 1, 3);
        if (data[0] == 'f') {
            std::istringstream set_in(t[0]), dna_in(t[0]), prot_in(t[0]);
            ProteinSequenceSet set;
            set.read_fasta_file(set_in);
            DnaCodeSequence dna;
            dna.read_fasta(dna_in);
            ProteinSequence prot;
            prot.read_fasta(prot_in);
        } else if (data[0] == 'a') {
            std::istringstream s1(t[0]), t1(t[1]), s2(t[0]), t2(t[2]);
            PairAlignParams pair(4);
            pair.read(s1, t1);
            ProfAlignParams prof(4);
            prof.read(s2, t2);
        }
    });
    return 0;
}
