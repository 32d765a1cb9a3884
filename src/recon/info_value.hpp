#pragma once
// What a call reports, as a tree of named values that every front end turns
// into its own (an Octave struct, a Python dict), so the report's content is
// written once.

#include <string>
#include <utility>
#include <vector>

#include "recon/recon_call.hpp"

struct InfoValue {
    enum class Kind { text, numbers, flag, list, record };
    Kind kind = Kind::numbers;
    std::string text;
    std::vector<double> numbers;  // column-major in `dims`
    std::vector<Index> dims;      // of numbers: rows, columns
    std::vector<InfoValue> items;                            // list
    std::vector<std::pair<std::string, InfoValue>> fields;  // record
    bool flag = false;

    static InfoValue of_text(std::string text);
    static InfoValue of_number(double number);
    static InfoValue of_flag(bool flag);
    static InfoValue of_matrix(std::vector<double> numbers, Index rows);  // rows x (size / rows); empty: 0 x 0
    static InfoValue of_list(std::vector<InfoValue> items);
    static InfoValue of_record(std::vector<std::pair<std::string, InfoValue>> fields);
};

// ranges, detection, method, constraint, iterations, change, residual,
// echo_offset, threads, combination, noise_source, noise_sigma, adaptive,
// warnings, seconds: sigma values at the caller's scale. Per image a column:
// iterations (POCS, over its blocks: the fewest, the median, the most),
// change, residual, echo_offset.
InfoValue describe(const ReconInfo& info, const ReconCall& call);
