// Symbol sequences: DNA and protein codings and their FASTA reading and writing.
#include "SymbolSequence.h"

#include <cstring>
#include <iostream>
#include <limits>

namespace {
// Letters of the protein codes 1..22; index 5 holds the G that code 5 prints as.
const char kAaOut[] = "XABCDGFGHIKLMNPQRSTVWYZ";
const char kAaIn[] = "ABCDEFGHIKLMNPQRSTVWYZ";
const char kNuc[] = "TCGA";
constexpr std::streamsize kLineLimit = 1024;

// Reads FASTA lines into `seq` until the next '>' (consumed) or the end of the stream. Each line
// goes through `recode` in place and is appended up to its first zero code. A line longer than the
// buffer is taken in several pieces.
template <class Recode> void read_fasta_lines(std::istream& is, std::string& seq, Recode recode) {
    seq.clear();
    char buf[kLineLimit + 1];
    for (;;) {
        char c;
        if (!(is >> c) || c == '>')
            return;
        buf[0] = c;
        is.getline(buf + 1, kLineLimit - 1);
        if (is.fail() && !is.eof() && is.gcount() == kLineLimit - 2)
            is.clear();
        const std::size_t n = std::strlen(buf);
        for (std::size_t i = 0; i < n; ++i)
            buf[i] = recode(buf[i]);
        std::cerr << "read next line\n";
        seq.append(buf, std::strlen(buf));
    }
}
} // namespace

void SymbolSequence::write_fasta(std::ostream& os) const {
    for (std::size_t i = 0; i < size(); ++i) {
        if (i > 0 && i % 60 == 0)
            os << '\n';
        os << decode_char((*this)[i]);
    }
    os << '\n';
}

DnaCodeSequence::DnaCodeSequence(const std::string& letters) : SymbolSequence(letters) {
    std::cerr << "init dna code string with " << letters.size() << " chars\n";
    for (char& c : *this)
        c = encode_nuc(c);
}

char DnaCodeSequence::decode_nuc(char code) {
    return code >= 0 && code <= 3 ? kNuc[static_cast<int>(code)] : 'X';
}

char DnaCodeSequence::encode_nuc(char letter) {
    for (int i = 0; i < 4; ++i)
        if (kNuc[i] == letter)
            return static_cast<char>(i);
    std::cerr << "Unkown nuc code " << letter << "\n";
    return 4;
}

void DnaCodeSequence::read_fasta(std::istream& is) { read_fasta_lines(is, *this, encode_nuc); }

char ProteinSequence::decode_aa(char code) {
    return code >= 1 && code <= 22 ? kAaOut[static_cast<int>(code)] : 'X';
}

char ProteinSequence::encode_aa(char letter) {
    for (int i = 0; i < 22; ++i)
        if (kAaIn[i] == letter)
            return static_cast<char>(i + 1);
    std::cerr << "Unkown AA code " << letter << "\n";
    return 23;
}

void ProteinSequence::read_fasta(std::istream& is) { read_fasta_lines(is, *this, encode_aa); }

void ProteinSequenceSet::read_fasta_file(std::istream& is) {
    char c;
    while (is.get(c) && c != '>') {
    }
    if (!is)
        return;
    char buf[kLineLimit];
    for (int id = 0;; ++id) {
        is.getline(buf, kLineLimit);
        if (is.fail() && !is.eof() && is.gcount() == kLineLimit - 1) {
            // A header longer than the limit: keep its head, drop the rest of the line.
            is.clear();
            is.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        } else if (!is && is.gcount() == 0) {
            return;
        }
        std::cerr << "read prot " << id << " descriptor " << buf << "\n";
        m_names.emplace_back(buf);
        ProteinSequence seq;
        seq.read_fasta(is);
        push_back(seq);
        if (!is)
            return;
    }
}

void ProteinSequenceSet::write_fasta_file(std::ostream&) const {}
