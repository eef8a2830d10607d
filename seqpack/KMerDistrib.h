// KMerDistrib: a value per k-mer text read from a table of a name and n numbers a line.
#ifndef VESK_SEQPACK_KMERDISTRIB_H
#define VESK_SEQPACK_KMERDISTRIB_H

#include <istream>
#include <map>
#include <string>

class KMerDistrib {
public:
    // Reads lines of a name and `n` floats; the name's entry is the last value over n (the sum of
    // the values is formed and not used). A failed stream ends the read.
    void read(std::istream& in, int n);

    bool has(const std::string& name) const { return m_dist.count(name) != 0; }
    // The entry of a name; 0 if there is none.
    float get(const std::string& name) const;

    std::map<std::string, float> m_dist;
};

#endif
