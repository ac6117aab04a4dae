#include "import/shop_file.h"

#include "import/shop_reader.h"

namespace vantlo {

ShopFile read_shop_file(const std::string& path, Language language) {
    ShopReader reader(language);
    reader.read(path);
    reader.errors().raise();
    return std::move(reader.shop());
}

}  // namespace vantlo
