// Builds the MAP of examples/map.xml from its two matrices, draws 1000
// intervals and prints their mean next to the model's.
#include <velmora/velmora.h>

#include <iostream>

int main() {
    using velmora::Matrix;
    try {
        velmora::MAP map(Matrix({{-3.2, 0.2, 0}, {0.1, -1.2, 0.1}, {0, 0.1, -0.4}}),
                         Matrix({{2.7, 0.3, 0}, {0.1, 0.8, 0.1}, {0, 0.05, 0.25}}));
        map.initRandomNumberGeneration(7);
        const int count = 1000;
        double sum = 0;
        for (int i = 0; i < count; ++i) sum += map.getNextRandomVariate();
        std::cout << velmora::libVelmora_name_full() << "\n"
                  << "mean of " << count << " values: " << sum / count << "\n"
                  << "mean of the MAP:       " << map.getMoments(1, 1)[0] << "\n";
    } catch (velmora::Exception& e) {
        std::cout << e.toString();
        return 1;
    }
    return 0;
}
