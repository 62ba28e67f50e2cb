#include "Foundation/Resource.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(Resource, areInTheProgram) {
    EXPECT_EQ(Resource::json(u"agents/builtins.json"_s).array()->size(), 6U);
}

}  // namespace
}  // namespace veltrin
