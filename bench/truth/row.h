// One line of the table that is written.
#pragma once

#include <cmath>
#include <string>

#include "session/text.h"

namespace vornel::truth {

// Values with their names, in the order in which they are put in. A value that is not known stays
// empty.
class Row {
  public:
    void Text(const char* name, const std::string& value) {
        std::string clean = value;
        for (char& c : clean) {
            c = c == ',' || c == '\n' || c == '"' ? ';' : c;
        }
        Put(name, clean);
    }
    void Whole(const char* name, long long value) { Put(name, std::to_string(value)); }
    void Real(const char* name, double value, int digits = 5) {
        Put(name, std::isfinite(value) ? session::Format("%.*g", digits, value) : std::string());
    }

    const std::string& Names() const { return names_; }
    const std::string& Values() const { return values_; }

  private:
    void Put(const char* name, const std::string& value) {
        const char* comma = names_.empty() ? "" : ",";
        names_.append(comma).append(name);
        values_.append(comma).append(value);
    }

    std::string names_;
    std::string values_;
};

}  // namespace vornel::truth
