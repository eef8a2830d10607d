// Symbol sequences: strings of small integer codes, with DNA and protein codings read from FASTA.
#ifndef VESK_HMM_SYMBOLSEQUENCE_H
#define VESK_HMM_SYMBOLSEQUENCE_H

#include <istream>
#include <ostream>
#include <string>
#include <vector>

// A string of symbol codes (one char per symbol, not a letter).
class SymbolSequence : public std::string {
public:
    SymbolSequence() = default;
    explicit SymbolSequence(const std::string& codes) : std::string(codes) {}
    virtual ~SymbolSequence() = default;
    SymbolSequence(const SymbolSequence&) = default;
    SymbolSequence& operator=(const SymbolSequence&) = default;

    // The printable character of a code: the code itself here.
    virtual char decode_char(char code) const { return code; }
    // decode_char of every symbol, 60 to a line, with a line end after the last.
    void write_fasta(std::ostream& os) const;
    // The symbol code at position i (0-based) as a non-negative int.
    int code_at(std::size_t i) const { return static_cast<unsigned char>((*this)[i]); }
};

class SymbolSequenceSet : public std::vector<SymbolSequence> {
public:
    virtual ~SymbolSequenceSet() = default;
    // Empty in the base, which keeps no names.
    virtual std::string get_sequence_name(int) const { return std::string(); }
};

// DNA with T 0, C 1, G 2, A 3 and 4 for anything else. Since T is 0 and a FASTA line is appended up to
// its first zero code, read_fasta keeps of each line only the part before its first T.
class DnaCodeSequence : public SymbolSequence {
public:
    DnaCodeSequence() = default;
    // Recodes the letters of `letters`.
    explicit DnaCodeSequence(const std::string& letters);

    char decode_char(char code) const override { return decode_nuc(code); }
    static char decode_nuc(char code);
    static char encode_nuc(char letter);
    // Replaces the sequence with the lines up to the next '>' (which is consumed) or the end.
    void read_fasta(std::istream& is);
};

// Proteins: A 1, B 2, C 3 ... Z 22 in the order of the read table, 23 for any other letter. Code 5
// prints as G.
class ProteinSequence : public SymbolSequence {
public:
    char decode_char(char code) const override { return decode_aa(code); }
    static char decode_aa(char code);
    static char encode_aa(char letter);
    // Replaces the sequence with the lines up to the next '>' (which is consumed) or the end.
    void read_fasta(std::istream& is);
};

// Named protein sequences read from a FASTA stream.
class ProteinSequenceSet : public SymbolSequenceSet {
public:
    std::string get_sequence_name(int i) const override { return m_names[i]; }
    void read_fasta_file(std::istream& is);
    // Writes nothing.
    void write_fasta_file(std::ostream& os) const;

    std::vector<std::string> m_names;
};

#endif
