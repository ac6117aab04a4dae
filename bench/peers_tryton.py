"""Posts stock moves with Tryton on a PostgreSQL database of its own, in transactions of ten, as `vantlo` does.

Usage: peers_tryton.py CONFIGURATION DATABASE BILLS      prints the median time of a line in microseconds

The same goods in the same models move between two storage locations; every bill is created and done.
"""

import statistics
import sys
import time
from decimal import Decimal

from trytond.config import config

configuration, database, bills = sys.argv[1], sys.argv[2], int(sys.argv[3])
config.update_etc(configuration)

from trytond.pool import Pool  # noqa: E402  it reads the configuration when it is loaded
from trytond.transaction import Transaction  # noqa: E402

GOODS = 12
MODELS = 8
LINES_IN_A_BILL = 10


def prepare():
    """Makes a company, two locations and the goods. Returns the identifiers that moves need."""
    pool = Pool()
    party, = pool.get("party.party").create([{"name": "Shop"}])
    currency, = pool.get("currency.currency").create([{"name": "Yuan", "code": "CNY", "symbol": "¥"}])
    company, = pool.get("company.company").create([{"party": party.id, "currency": currency.id}])
    location = pool.get("stock.location")
    locations = location.create([{"name": name, "code": name, "type": "storage"} for name in ("W01", "W02")])
    unit, = pool.get("product.uom").search([("symbol", "=", "u")], limit=1)
    templates = pool.get("product.template").create([
        {"name": f"G{number:04}", "type": "goods", "default_uom": unit.id,
         "products": [("create", [{"suffix_code": f"G{number:04}-{model}"} for model in range(MODELS)])]}
        for number in range(GOODS)])
    products = [template.products[model].id for model in range(MODELS) for template in templates]
    return company.id, [place.id for place in locations], unit.id, products


def post(bill, company, locations, unit, products):
    """Creates the moves of one bill and does them."""
    move = Pool().get("stock.move")
    first = bill * LINES_IN_A_BILL
    moves = move.create([
        {"product": products[number % len(products)], "uom": unit, "quantity": 3.0 * (1 + number % 40),
         "from_location": locations[1], "to_location": locations[0], "company": company,
         "unit_price": Decimal(0), "currency": None}
        for number in range(first, first + LINES_IN_A_BILL)])
    move.do(moves)


Pool.start()
pool = Pool(database)
pool.init()
with Transaction().start(database, 1):
    shop = prepare()
    Transaction().commit()

times = []
for bill in range(bills):
    start = time.perf_counter()
    with Transaction().start(database, 1, context={"company": shop[0]}):
        post(bill, *shop)
        Transaction().commit()
    times.append(time.perf_counter() - start)

with Transaction().start(database, 1, readonly=True, context={"company": shop[0]}):
    done = Pool().get("stock.move").search([("state", "=", "done")], count=True)
if done != bills * LINES_IN_A_BILL:
    sys.exit(f"peers_tryton.py: {done} moves are done, not {bills * LINES_IN_A_BILL}")
print(f"{statistics.median(times) / LINES_IN_A_BILL * 1e6:.1f}")
