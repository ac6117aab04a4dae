#include "posting/goods/goods.h"
#include "posting/goods/goods_bill.h"

namespace vantlo::posting {

namespace {

// The last row's update computes InQty from OutQty; its insert does not. Hosts rely on both.
// clang-format off
//                                               counter                  on hand                     In  Out  Current
constexpr Movement main_item_issued           = {u"OutQty = OutQty + ", u",CurrentQty = CurrentQty-",  0,  +1,  -1};
constexpr Movement components_received        = {u"InQty = InQty + ",   u",CurrentQty = CurrentQty+", +1,   0,  +1};
constexpr Movement components_received_back   = {u"InQty = InQty - ",   u",CurrentQty = CurrentQty-", -1,   0,  -1};
constexpr Movement main_item_issued_back      = {u"InQty = OutQty-",    u",CurrentQty = CurrentQty+",  0,  -1,  +1};
// clang-format on

}  // namespace

void AddInventory_CXD_ZJ(PostingFrame& frame, const Text& cId) { post_components(frame, cId, components_received); }

std::int32_t AddInventory_CXD_MJ(PostingFrame& frame, const Text& cId) {
    return post_main_item(frame, cId, main_item_issued_back);
}

void ReduceInventory_CXD_ZJ(PostingFrame& frame, const Text& cId) {
    post_components(frame, cId, components_received_back);
}

std::int32_t ReduceInventory_CXD_MJ(PostingFrame& frame, const Text& cId) {
    return post_main_item(frame, cId, main_item_issued);
}

}  // namespace vantlo::posting
