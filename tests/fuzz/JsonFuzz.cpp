#include "Foundation/Json.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = Json::tryParse(fuzz::bytes(data, size));
    if (!value) return 0;
    fuzz::check(Json::tryParse(value->serialized()) == value, "a value survives its own text");
    fuzz::check(Json::tryParse(value->serialized(2)) == value, "a value survives its own indented text");
    fuzz::check(Json::tryParse(value->prettyPrinted()).has_value(), "the form of the files reads");
    return 0;
}
