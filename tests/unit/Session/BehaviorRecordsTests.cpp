#include "Session/UserProfile.h"
#include "support/RecordLaws.h"

namespace veltrin {
namespace {

TEST(BehaviorRecords, keepTheLawsOfRecords) {
    expectRecordLaws<TrackedBehavior>();
    expectRecordLaws<UserProfile>();
}

}  // namespace
}  // namespace veltrin
