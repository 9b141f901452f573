// The beginning of a transport stream in a join.
#include "tests/fuzz/target.h"
#include "tool/edit/transport_stream.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ScratchFile file("1.ts");
    file.Write(data, size);
    const auto shape = tool::ReadTransportStream(file.Path());
    if (shape) {
        Require(shape->pictureType != 0 || shape->soundType != 0, "a stream has a track");
        Require((shape->pictureType != 0) == !shape->parameterSets.empty(),
                "a picture has parameter sets");
        Require(shape->parameterSets.size() <= size, "parameter sets are from the file");
    }
    Require(tool::FitTogether({file.Path(), file.Path()}) == shape.has_value(),
            "what can be read fits to itself");
    return 0;
}
