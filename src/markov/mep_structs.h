// Plain result records of the Markovian fitters: MMAP, the matrices of a
// marked Markovian arrival process (D0 without an event, then one event
// matrix per class), and map_markovian_rep, the pair D0, D1 of a Markovian
// arrival process. Neither is a Process; they only write their matrices, in
// texts that the MAP loader reads back (MAP(D0, D1) makes a model of a
// map_markovian_rep).
#ifndef VELMORA_MARKOV_MEP_STRUCTS_H
#define VELMORA_MARKOV_MEP_STRUCTS_H

#include <string>
#include <vector>

#include "core/process.h"
#include "numerics/matrix.h"

namespace velmora {

class MMAP {
public:
    explicit MMAP(std::vector<Matrix> matrices);

    // Format 1: the XML document of a MAP, whose loader reads d0 and d1 and
    // skips d2, ...; any other format: the bare text. "Cannot open file."
    // when the file can't be written; a list without matrices has no order
    // to write and throws in format 1.
    void save(std::string file, format f);
    // Format 1: "<dk>", the text of matrix k, "</dk>" and a line end, per
    // matrix; any other format: "Dk: " and the text of matrix k. Matrices
    // with precision 10.
    std::string toString(format f);

    std::vector<Matrix> matrices;  // D0, D1, D2, ...
};

struct map_markovian_rep {
    map_markovian_rep() = default;
    map_markovian_rep(const map_markovian_rep& other) = default;
    map_markovian_rep& operator=(const map_markovian_rep& other) = default;
    ~map_markovian_rep() = default;

    Matrix D0;  // transitions without an event
    Matrix D1;  // transitions with an event
};

map_markovian_rep create_map_markovian_rep(Matrix D0, Matrix D1);
// The key-value text of a MAP model: "model = map", then D0 and D1 with
// precision 10.
std::string map_markovian_rep_to_string(map_markovian_rep rep);
// That text and a line end; "Cannot open file." when the file can't be written.
void save_map_markovian_rep(map_markovian_rep rep, std::string file);

}  // namespace velmora

#endif
