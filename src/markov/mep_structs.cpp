#include "markov/mep_structs.h"

#include <fstream>
#include <sstream>
#include <utility>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace {

std::ofstream openForWriting(const std::string& file) {
    std::ofstream out(file.c_str(), std::ios::out | std::ios::trunc);
    if (!out.is_open()) throw Exception("mep_structs", __LINE__, "Cannot open file.");
    return out;
}

}  // namespace

MMAP::MMAP(std::vector<Matrix> matrices) : matrices(std::move(matrices)) {}

void MMAP::save(std::string file, format f) {
    // The frame names the order, which an empty list doesn't have; refused
    // before the file is touched.
    if (f == FORMAT_XML && matrices.empty()) throw Exception("mep_structs", __LINE__, "MMAP without matrices.");
    std::ofstream out = openForWriting(file);
    if (f == FORMAT_XML) {
        out << "<?xml version=\"1.0\"?>" << std::endl;
        out << "<velmora>" << std::endl;
        out << "<map>" << std::endl;
        out << "<states>" << matrices[0].getNumberRows() << "</states>" << std::endl;
    }
    out << toString(f);
    if (f == FORMAT_XML) {
        out << "</map>" << std::endl;
        out << "</velmora>" << std::endl;
    }
}

std::string MMAP::toString(format f) {
    std::ostringstream out;
    for (std::size_t k = 0; k < matrices.size(); ++k) {
        if (f == FORMAT_XML)
            out << "<d" << k << ">" << matrices[k].toString(10) << "</d" << k << ">" << std::endl;
        else
            out << "D" << k << ": " << matrices[k].toString(10);
    }
    return out.str();
}

map_markovian_rep create_map_markovian_rep(Matrix D0, Matrix D1) {
    map_markovian_rep rep;
    rep.D0 = std::move(D0);
    rep.D1 = std::move(D1);
    return rep;
}

std::string map_markovian_rep_to_string(map_markovian_rep rep) {
    std::ostringstream out;
    out << "model = map" << std::endl;
    out << "D0 = " << rep.D0.toString(10) << std::endl;
    out << "D1 = " << rep.D1.toString(10) << std::endl;
    return out.str();
}

void save_map_markovian_rep(map_markovian_rep rep, std::string file) {
    std::ofstream out = openForWriting(file);
    out << map_markovian_rep_to_string(rep) << std::endl;
}

}  // namespace velmora
