// The Config getter for matrices: the stored text read in the text form of
// Matrix. A missing key fails as in the other getters.
#include "config/conf.h"
#include "numerics/matrix.h"

namespace velmora {

Matrix Config::getValueAsMatrix(std::string key) { return Matrix(getValue(key)); }

}  // namespace velmora
