// Line splitting and substring counting for the tab tables.
#ifndef VESK_BASE_STRUTIL_H
#define VESK_BASE_STRUTIL_H

#include <istream>
#include <string>
#include <vector>

// Reads one line and splits it at `sep`, dropping carriage returns. At the end of the stream
// before a newline, the unfinished last field is not appended.
void split_line(std::istream& in, std::vector<std::string>& fields, char sep);

// Occurrences of `pattern` in `text`, overlaps counted.
int count_match(const std::string& text, const std::string& pattern);

#endif
