#include "run/solution_records.h"

namespace vornel {

namespace {

template <class Record>
Record FirstOfMode(const std::vector<Record>& records, int mode) {
    for (const Record& record : records) {
        if (record.mode == mode) {
            return record;
        }
    }
    return Record();
}

}  // namespace

SolveResultFloat ResultManage::FindFloat(int mode) const {
    return FirstOfMode(floatResults, mode);
}

SolveResultFixed ResultManage::FindFixed(int mode) const {
    return FirstOfMode(fixedResults, mode);
}

}  // namespace vornel
