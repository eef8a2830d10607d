// KMerDistrib: the table reader.
#include "KMerDistrib.h"

void KMerDistrib::read(std::istream& in, int n) {
    std::string name;
    while (in >> name) {
        float sum = 0.0f, last = 0.0f;
        bool ok = true;
        for (int i = 0; i < n; ++i) {
            if (!(in >> last)) {
                ok = false;
                break;
            }
            sum += last;
        }
        if (!ok)
            break;
        (void)sum;
        m_dist[name] = last / static_cast<float>(n);
    }
}

float KMerDistrib::get(const std::string& name) const {
    std::map<std::string, float>::const_iterator it = m_dist.find(name);
    return it == m_dist.end() ? 0.0f : it->second;
}
