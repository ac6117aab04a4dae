// The small parts that every posted line is made of.

#include <benchmark/benchmark.h>

#include "automation/number_text.h"
#include "bench/movements.h"
#include "dataaccess/sql_literals.h"
#include "posting/ledger.h"

namespace {

using namespace vantlo;
using benchmark::DoNotOptimize;

void literal_of_a_text(benchmark::State& state) {
    const Variant text = u"曜石黑 O'Neil";
    for ([[maybe_unused]] auto turn : state) DoNotOptimize(GetSqlVal(text));
}

void literal_of_a_quantity(benchmark::State& state) {
    const Variant quantity = Currency::from_ten_thousandths(123'456'789);
    for ([[maybe_unused]] auto turn : state) DoNotOptimize(GetSqlVal(quantity));
}

void text_of_a_single(benchmark::State& state) {
    for ([[maybe_unused]] auto turn : state) {
        float value = 12.345F;
        DoNotOptimize(value);
        DoNotOptimize(number_text(value));
    }
}

void text_of_a_currency(benchmark::State& state) {
    for ([[maybe_unused]] auto turn : state) {
        Currency value = Currency::from_ten_thousandths(123'456'789);
        DoNotOptimize(value);
        DoNotOptimize(number_text(value));
    }
}

void currency_from_a_double(benchmark::State& state) {
    for ([[maybe_unused]] auto turn : state) {
        double value = 12345.67891;
        DoNotOptimize(value);
        DoNotOptimize(Currency::from_double(value));
    }
}

void product_of_currencies(benchmark::State& state) {
    for ([[maybe_unused]] auto turn : state) {
        Currency factor = Currency::from_whole(12), quantity = Currency::from_ten_thousandths(123'456'789);
        DoNotOptimize(factor);
        DoNotOptimize(quantity);
        DoNotOptimize(factor * quantity);
    }
}

/// The whole text of a statement, from a line as the native host hands it over.
template <typename Word>
void text_of_a_statement(benchmark::State& state, Word word) {
    const std::vector<Record> lines = bench::movements(1, 1);
    RecordLine line(lines.front(), nullptr);
    const Side side = vantlo::side(movement::receipt, Source::of_line(u"Receiver"), Source::given(std::int16_t{0}),
                                   Currency::from_whole(24));
    const StatementStyle style;
    for ([[maybe_unused]] auto turn : state) {
        const Statement statement = word(line, style, side);
        DoNotOptimize(statement.text().data());
    }
}

void text_of_an_update(benchmark::State& state) {
    text_of_a_statement(state, [](Line& line, const StatementStyle& style, const Side& moved) {
        return update_statement(line, style, moved);
    });
}

void text_of_an_insert(benchmark::State& state) {
    text_of_a_statement(state, [](Line& line, const StatementStyle& style, const Side& moved) {
        return insert_statement(line, style, moved);
    });
}

BENCHMARK(literal_of_a_text);
BENCHMARK(literal_of_a_quantity);
BENCHMARK(text_of_a_single);
BENCHMARK(text_of_a_currency);
BENCHMARK(currency_from_a_double);
BENCHMARK(product_of_currencies);
BENCHMARK(text_of_an_update);
BENCHMARK(text_of_an_insert);

}  // namespace

BENCHMARK_MAIN();
