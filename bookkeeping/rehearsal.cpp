#include "bookkeeping/rehearsal.h"

namespace vantlo {

namespace {

class RehearsingConnection final : public NativeConnection {
public:
    explicit RehearsingConnection(Owned<NativeConnection> inner) : inner_(std::move(inner)) {}

    ResultTable run(TextView statement) override { return inner_->run(statement); }
    void begin() override {
        if (!has_begun_) inner_->begin();
        has_begun_ = true;
    }
    void commit() override {}
    void roll_back() override {
        has_begun_ = false;
        inner_->roll_back();
    }
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return inner_->dialect(); }
    [[nodiscard]] std::string engine() const override { return inner_->engine(); }

private:
    ~RehearsingConnection() override {
        try {
            roll_back();
        } catch (...) {
            // The engine rolls back what a closing connection leaves open.
        }
    }

    Owned<NativeConnection> inner_;
    bool has_begun_ = false;
};

}  // namespace

Connect rehearsing(Connect connect) {
    return [connect = std::move(connect)] { return Owned<NativeConnection>(new RehearsingConnection(connect())); };
}

}  // namespace vantlo
