#include "posting/goods/goods.h"
#include "posting/goods/goods_bill.h"

namespace vantlo::posting {

namespace {

// The blanks around the signs differ from member to member.
// clang-format off
//                                                 counter                  on hand                     In  Out  Current
constexpr Movement components_issued            = {u"OutQty = OutQty + ", u",CurrentQty = CurrentQty-",  0,  +1,  -1};
constexpr Movement components_issued_back       = {u"OutQty = OutQty - ", u",CurrentQty = CurrentQty+",  0,  -1,  +1};
constexpr Movement assembled_item_received      = {u"InQty = InQty+",     u",CurrentQty = CurrentQty+", +1,   0,  +1};
constexpr Movement assembled_item_received_back = {u"InQty = InQty - ",   u",CurrentQty = CurrentQty-", -1,   0,  -1};
// clang-format on

}  // namespace

void AddInventory_ZZD_ZJ(PostingFrame& frame, const Text& cId) { post_components(frame, cId, components_issued_back); }

std::int32_t AddInventory_ZZD_MJ(PostingFrame& frame, const Text& cId) {
    return post_main_item(frame, cId, assembled_item_received);
}

void ReduceInventory_ZZD_ZJ(PostingFrame& frame, const Text& cId) { post_components(frame, cId, components_issued); }

std::int32_t ReduceInventory_ZZD_MJ(PostingFrame& frame, const Text& cId) {
    return post_main_item(frame, cId, assembled_item_received_back);
}

}  // namespace vantlo::posting
