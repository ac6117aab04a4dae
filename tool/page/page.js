// What the page does: the ledger's table with its filters, the cards behind its rows, and the charts.
"use strict";
(() => {
  const byId = (id) => document.getElementById(id);
  const data = JSON.parse(byId("data").textContent);
  const { words, strings } = data;
  const day = 86400;

  /// A text of the page with its places filled: `{}`, and `{:row|rows}` for a number of things.
  const say = (key, ...values) =>
    words[key].replace(/\{(?::([^|}]*)\|?([^}]*))?\}/g, (place, one, several) => {
      const value = values.shift();
      if (!one) return typeof value === "number" ? grouped(value) : value;
      return grouped(value) + " " + (value === 1 ? one : several || one);
    });

  const escaped = (text) => text.replace(/[&<>"']/g, (sign) => "&#" + sign.charCodeAt(0) + ";");

  // Quantities are exact: numbers, or texts where a number would lose digits. The ledger may hold something else instead.
  const grouped = (quantity) => {
    const [whole, decimals] = String(quantity).split(".");
    return whole.replace(/\B(?=(\d{3})+$)/g, ",") + (decimals ? "." + decimals : "");
  };
  const isQuantity = (cell) => /^-?\d+(\.\d{1,4})?$/.test(String(cell));
  const tenThousandths = (quantity) => {
    const [whole, decimals = ""] = String(quantity).replace("-", "").split(".");
    const amount = BigInt(whole + decimals.padEnd(4, "0"));
    return String(quantity).startsWith("-") ? -amount : amount;
  };
  const quantityOf = (amount) => {
    const digits = String(amount < 0n ? -amount : amount).padStart(5, "0");
    const decimals = digits.slice(-4).replace(/0+$/, "");
    return (amount < 0n ? "-" : "") + digits.slice(0, -4) + (decimals ? "." + decimals : "");
  };

  // Times are seconds of the shop's own calendar and clock, whatever the reader's are.
  const two = (number) => String(number).padStart(2, "0");
  const dayText = (seconds) => new Date(seconds * 1000).toISOString().slice(0, 10);
  const timeText = (seconds) => new Date(seconds * 1000).toISOString().slice(0, 19).replace("T", " ");

  /// A column of quantities: figure spaces stand for missing decimals, so that the points are below each other.
  const aligned = (quantities) => {
    const decimalsOf = (quantity) => String(quantity).split(".")[1]?.length ?? 0;
    let most = 0;
    for (const quantity of quantities) if (isQuantity(quantity)) most = Math.max(most, decimalsOf(quantity));
    return (quantity) => {
      if (!isQuantity(quantity)) return escaped(String(quantity ?? ""));
      const missing = most - decimalsOf(quantity);
      const point = missing === most && most > 0 ? "\u2008" : "";
      const text = grouped(quantity) + point + "\u2007".repeat(missing);
      return String(quantity).startsWith("-") ? '<span class="negative">' + text + "</span>" : text;
    };
  };

  // The place of each string in the reader's alphabet, made when something is first sorted by it.
  let places;
  const placeOf = (string) => {
    if (!places) {
      const compare = new Intl.Collator(document.documentElement.lang, { numeric: true }).compare;
      places = new Uint32Array(strings.length);
      Array.from(strings.keys())
        .sort((left, right) => compare(strings[left], strings[right]))
        .forEach((index, place) => (places[index] = place));
    }
    return places[string];
  };

  // -- Tables ----------------------------------------------------------------------------------------------------------

  const textColumn = (string, display, className) => ({ className, type: "num", searchable: false,
    data: (row, use) => (use === "display" ? display(row) : use === "sort" ? placeOf(string(row)) : "") });
  const numberColumn = (number, display, className) => ({ className, type: "num", searchable: false,
    data: (row, use) => (use === "display" ? display(row) : use === "sort" ? Number(number(row)) : "") });

  const makeTable = (table, pager, rows, columns, pageLength, more = {}) => {
    const api = jQuery(table).DataTable({
      data: rows, columns, pageLength, dom: "t", deferRender: true, autoWidth: false, orderClasses: false, order: [],
      orderMulti: true, language: {
        emptyTable: words.no_rows, zeroRecords: words.no_rows,
        aria: { sortAscending: words.sort_ascending, sortDescending: words.sort_descending } }, ...more });
    // The header of a column is a button to the keyboard: Enter sorts by itself, the space bar like it.
    jQuery(table).find("thead th").on("keydown", (event) => {
      if (event.key === " ") { event.preventDefault(); event.currentTarget.click(); }
    });
    addPager(api, pager);
    return api;
  };

  const pageLengths = [50, 200, 1000];
  const addPager = (api, pager) => {
    pager.innerHTML = '<button type="button"></button><span class="where"></span><button type="button"></button>' +
      '<label></label>';
    const [back, forth] = pager.querySelectorAll("button");
    const where = pager.querySelector(".where");
    const label = pager.querySelector("label");
    const lengths = document.createElement("select");
    back.textContent = words.previous_page;
    forth.textContent = words.next_page;
    label.append(words.rows_a_page + " ", lengths);
    for (const length of pageLengths) lengths.add(new Option(length, length));
    const turn = (to) => {
      api.page(to).draw("page");
      api.table().container().closest("section").scrollIntoView({ block: "start" });
    };
    back.addEventListener("click", () => turn("previous"));
    forth.addEventListener("click", () => turn("next"));
    lengths.addEventListener("change", () => api.page.len(Number(lengths.value)).draw());
    const show = () => {
      const { start, end, recordsDisplay, page, pages } = api.page.info();
      pager.hidden = recordsDisplay <= pageLengths[0];
      back.disabled = page === 0;
      forth.disabled = page + 1 >= pages;
      where.textContent = say("rows_shown", start + 1, end, recordsDisplay);
    };
    api.on("draw", show);
    show();
  };

  const mostPrintedRows = 5000;

  // -- The ledger ------------------------------------------------------------------------------------------------------

  // A row: the places of its texts in `strings`, then quantities, then its own number.
  const [WAREHOUSE, WAREHOUSE_NAME, GOODS, GOODS_NAME, MODEL1, MODEL2, STATUS, CLASS, UNIT, RECEIVED, ISSUED, ON_HAND,
    NUMBER] = Array(13).keys();
  const rows = data.ledger;
  rows.forEach((row, number) => row.push(number));

  // An id is not broken at the end of a line, unless it is a long one.
  const id = (string, classes = "") => '<span class="' + classes + (strings[string].length <= 24 ? " short" : "") + '">' +
    escaped(strings[string]) + "</span>";
  const named = (string, name) => id(string, "id") + (name ? " " + escaped(strings[name]) : "");
  const linked = (number, html) => (data.cards[number] ? '<a href="#card-' + number + '">' + html + "</a>" : html);
  const plain = (place) => (row) => escaped(strings[row[place]]);

  // Letters of either case and either width are the same to whoever searches.
  const folded = (text) => text.normalize("NFKC").toLowerCase();
  let searched;
  const searchedTextOf = (number) => {
    searched ??= rows.map((row) => folded(row.slice(WAREHOUSE, RECEIVED).map((string) => strings[string]).join("\n")));
    return searched[number];
  };

  const filters = { words: [], goods: "", warehouse: "", class: "", unit: "", status: "", negative: false, nonzero: false };
  const isWanted = (row) => {
    const selects = [["warehouse", WAREHOUSE], ["class", CLASS], ["unit", UNIT], ["status", STATUS]];
    for (const [filter, place] of selects) {
      if (filters[filter] !== "" && row[place] !== Number(filters[filter])) return false;
    }
    const onHand = Number(row[ON_HAND]);
    if (filters.negative && !(onHand < 0)) return false;
    if (filters.nonzero && onHand === 0) return false;
    if (filters.goods && !folded(strings[row[GOODS]] + "\n" + strings[row[GOODS_NAME]]).includes(filters.goods)) return false;
    return filters.words.every((word) => searchedTextOf(row[NUMBER]).includes(word));
  };

  const fillSelect = (select, place, namePlace) => {
    const texts = new Map();
    for (const row of rows) texts.set(row[place], namePlace === undefined ? 0 : row[namePlace]);
    select.add(new Option(words.all, ""));
    for (const [string, name] of [...texts].sort(([left], [right]) => placeOf(left) - placeOf(right))) {
      select.add(new Option((strings[string] || words.none) + (name ? " " + strings[name] : ""), string));
    }
    select.closest("label").hidden = texts.size < 2;
  };

  /// Sums of the rows that the filters leave, one row a unit: quantities of different units are never added.
  const mostTotals = 5;
  const anyHasUnit = rows.some((row) => row[UNIT]);
  const showTotals = (api, table) => {
    const totals = new Map();
    api.rows({ search: "applied" }).data().each((row) => {
      if (!row[UNIT] && anyHasUnit) return;  // nobody said what these are counted in
      let total = totals.get(row[UNIT]);
      if (!total) totals.set(row[UNIT], (total = { rows: 0, sums: [0n, 0n, 0n] }));
      ++total.rows;
      for (let i = 0; i < 3; ++i) total.sums[i] += amounts[row[NUMBER]][i];
    });
    const foot = table.tFoot ?? table.createTFoot();
    foot.replaceChildren();
    if (totals.size > mostTotals) return false;
    for (const [unit, { rows: count, sums }] of totals) {
      const line = foot.insertRow();
      line.innerHTML = '<th scope="row">' + escaped(unit ? say("total_in", strings[unit], count) : say("total", count)) + "</th>" +
        columnClasses.slice(1, -3).map((name) => '<td class="' + name + '"></td>').join("") +
        sums.map((sum, i) => '<td class="' + columnClasses.at(i - 3) + '">' + alignments[i](quantityOf(sum)) + "</td>").join("");
    }
    return true;
  };

  const amounts = rows.map((row) => [RECEIVED, ISSUED, ON_HAND].map((place) => (isQuantity(row[place]) ? tenThousandths(row[place]) : 0n)));
  const alignments = [RECEIVED, ISSUED, ON_HAND].map((place) => aligned(rows.map((row) => row[place])));
  const columnClasses = ["", "", "", "secondary", "secondary", "secondary", "", "number secondary",
    "number secondary", "number"];

  let ledgerTable;
  const showLedger = () => {
    const table = byId("ledger-table");
    const columns = [
      textColumn((row) => row[WAREHOUSE], (row) => named(row[WAREHOUSE], row[WAREHOUSE_NAME])),
      textColumn((row) => row[GOODS], (row) => linked(row[NUMBER], named(row[GOODS], row[GOODS_NAME]))),
      textColumn((row) => row[MODEL1], plain(MODEL1)), textColumn((row) => row[MODEL2], plain(MODEL2)),
      textColumn((row) => row[STATUS], plain(STATUS)), textColumn((row) => row[CLASS], plain(CLASS)),
      textColumn((row) => row[UNIT], plain(UNIT)),
      ...[RECEIVED, ISSUED, ON_HAND].map((place, i) => numberColumn((row) => row[place], (row) => alignments[i](row[place]))),
    ].map((column, i) => ({ ...column, className: columnClasses[i] }));
    fillSelect(byId("filter-warehouse"), WAREHOUSE, WAREHOUSE_NAME);
    fillSelect(byId("filter-class"), CLASS);
    fillSelect(byId("filter-unit"), UNIT);
    fillSelect(byId("filter-status"), STATUS);
    const goods = new Map(rows.map((row) => [row[GOODS], row[GOODS_NAME]]));
    if (goods.size <= 1000) {
      for (const [id, name] of goods) byId("goods-list").append(new Option(strings[name] ?? "", strings[id]));
    }
    byId("ledger-view").hidden = false;
    jQuery.fn.dataTable.ext.search.push((settings, texts, index, row) => settings.nTable !== table || isWanted(row));
    const api = (ledgerTable = makeTable(table, byId("ledger-pager"), rows, columns, pageLengths[0]));
    const tell = () => {
      const hasTotals = showTotals(api, table);
      const count = api.page.info().recordsDisplay;
      byId("ledger-count").textContent = (count === rows.length ? say("all_rows", count) : say("some_rows", count, rows.length)) +
        (hasTotals ? "" : " · " + words.several_units) +
        (count > mostPrintedRows ? " · " + say("printed_rows", mostPrintedRows) : "");
    };
    const apply = () => {
      filters.words = folded(byId("search").value).split(/\s+/).filter(Boolean);
      filters.goods = folded(byId("filter-goods").value).trim();
      for (const name of ["warehouse", "class", "unit", "status"]) filters[name] = byId("filter-" + name).value;
      for (const name of ["negative", "nonzero"]) filters[name] = byId("filter-" + name).checked;
      api.draw();
      tell();
    };
    const form = byId("filters");
    form.addEventListener("submit", (event) => event.preventDefault());
    form.addEventListener("input", apply);
    form.addEventListener("reset", () => setTimeout(apply));
    tell();
  };

  // -- Charts ----------------------------------------------------------------------------------------------------------

  const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();
  const charts = new Map();

  /// The marks of a time axis: at most so many days, months or years, at their beginnings.
  const timeMarks = (from, until, most) => {
    const days = (until - from) / day;
    const date = new Date(from * 1000);
    const marks = [];
    const dayStep = [1, 2, 7, 14].find((step) => days / step <= most);
    if (dayStep) {
      for (let at = Math.ceil(from / day) * day; at <= until; at += dayStep * day) marks.push({ at, text: dayText(at) });
      return marks;
    }
    const months = [1, 2, 3, 6, 12, 24, 60, 120].find((step) => days / 30.4 / step <= most) ?? 240;
    for (let month = date.getUTCFullYear() * 12 + Math.ceil(date.getUTCMonth() / months) * months; ; month += months) {
      const at = Date.UTC(Math.floor(month / 12), month % 12) / 1000;
      if (at > until) return marks;
      const text = Math.floor(month / 12) + (months < 12 ? "-" + two((month % 12) + 1) : "");
      if (at >= from) marks.push({ at, text });
    }
  };

  const timeAxis = (from, until) => ({
    type: "linear", min: from, max: until, grid: { display: false }, border: { color: colour("strong-rule") },
    afterBuildTicks: (axis) => {
      const most = Math.max(2, Math.floor(axis.chart.width / 95));
      axis.ticks = timeMarks(axis.min, axis.max, most).map(({ at, text }) => ({ value: at, label: text }));
    },
    ticks: { color: colour("muted"), maxRotation: 0, autoSkip: false, callback(value, index, ticks) { return ticks[index].label; } },
  });

  const draw = (id, make) => {
    charts.get(id)?.chart.destroy();
    charts.set(id, { make, chart: new Chart(byId(id), make()) });
  };
  const redraw = () => { for (const [id, { make }] of [...charts]) if (byId(id).offsetParent) draw(id, make); };

  const commonOptions = (unit, titleOf) => ({
    animation: false, maintainAspectRatio: false, responsive: true, normalized: true,
    interaction: { mode: "nearest", axis: "x", intersect: false },
    plugins: {
      legend: { display: false },
      tooltip: { displayColors: false, callbacks: {
        title: ([item]) => titleOf(item.raw),
        label: (item) => item.dataset.label + " " + grouped(item.raw.text) + " " + unit } },
    },
  });
  const quantityAxis = () => ({
    beginAtZero: true, grid: { color: colour("rule"), drawBorder: false }, ticks: { color: colour("muted"), maxTicksLimit: 6, callback: (value) => grouped(value) },
  });

  /// Stock is a step function: it keeps its value until it changes. What happened while the journal was off is dashed.
  const stockChart = (points, unit, titleOf) => () => ({
    type: "line",
    data: { datasets: [{
      label: words.on_hand, data: points, stepped: "before", borderColor: colour("accent"), borderWidth: 2, fill: "origin",
      backgroundColor: colour("accent") + "14", pointRadius: points.length === 1 ? 3 : 0, pointHitRadius: 8,
      pointHoverRadius: 4, pointBackgroundColor: colour("accent"),
      segment: { borderDash: ({ p1 }) => (p1.raw?.isGap ? [4, 4] : undefined) } }] },
    options: { ...commonOptions(unit, titleOf), parsing: false,
      scales: { x: timeAxis(points[0].x, Math.max(points.at(-1).x, points[0].x + day)), y: quantityAxis() } },
  });

  const movementChart = (bars, unit, from, until) => () => {
    const set = (label, name, hue, sign) => ({ label, backgroundColor: colour(hue), grouped: false, maxBarThickness: 26,
      barPercentage: .85, categoryPercentage: 1, minBarLength: 1,
      data: bars.filter((bar) => Number(bar[name]) !== 0).map((bar) => ({ x: bar.middle, y: sign * Number(bar[name]), text: bar[name], title: bar.title })) });
    return {
      type: "bar",
      data: { datasets: [set(words.received, "received", "accent", 1), set(words.issued, "issued", "issued", -1)] },
      options: { ...commonOptions(unit, (raw) => raw.title), parsing: false,
        plugins: { ...commonOptions(unit, (raw) => raw.title).plugins,
          legend: { align: "start", labels: { color: colour("text"), boxWidth: 12, boxHeight: 12 } } },
        scales: { x: timeAxis(from, until), y: { ...quantityAxis(), grid: { drawBorder: false,
          color: ({ tick }) => colour(tick?.value === 0 ? "strong-rule" : "rule") } } } },
    };
  };

  /// Days of a unit as months: [first second of it, opening, received, issued, closing].
  const months = (days) => {
    const result = [];
    for (const [at, opening, received, issued, closing] of days) {
      const date = new Date(at * 1000);
      const begins = Date.UTC(date.getUTCFullYear(), date.getUTCMonth()) / 1000;
      let month = result.at(-1);
      if (month?.[0] !== begins) result.push((month = [begins, opening, 0n, 0n, closing]));
      month[2] += tenThousandths(received);
      month[3] += tenThousandths(issued);
      month[4] = closing;
    }
    return result.map(([at, opening, received, issued, closing]) => [at, opening, quantityOf(received), quantityOf(issued), closing]);
  };

  const showTime = () => {
    const units = data.days;  // of each unit: its string, and its days
    if (units.length === 0) return;
    byId("time-charts").hidden = false;
    const unitSelect = byId("chart-unit"), stepSelect = byId("chart-step");
    units.forEach(([unit], index) => unitSelect.add(new Option(strings[unit] || words.none, index)));
    unitSelect.closest("label").hidden = units.length < 2;
    const span = Math.max(...units.map(([, days]) => days.at(-1)[0])) - Math.min(...units.map(([, days]) => days[0][0]));
    stepSelect.value = span > 100 * day ? "month" : "day";
    const show = () => {
      const [unitString, days] = units[unitSelect.value];
      const unit = strings[unitString];
      const begins = days[0][0];
      const ends = Math.max(data.made, begins + day);
      // What a day closes with is known at its end; today's is known now.
      const points = [{ x: begins, y: Number(days[0][1]), text: days[0][1] }];
      for (const [at, , , , closing] of days) points.push({ x: Math.min(at + day, ends), y: Number(closing), text: closing, at });
      points.push({ x: ends, y: Number(days.at(-1)[4]), text: days.at(-1)[4] });
      byId("stock-caption").textContent = say("stock_of", unit, dayText(begins), grouped(days[0][1]), dayText(data.made), grouped(days.at(-1)[4]));
      draw("stock-chart", stockChart(points, unit, (raw) => dayText(raw.at ?? raw.x)));
      const isByMonth = stepSelect.value === "month";
      const bars = (isByMonth ? months(days) : days).map(([at, , received, issued]) => {
        const date = new Date(at * 1000);
        const next = isByMonth ? Date.UTC(date.getUTCFullYear(), date.getUTCMonth() + 1) / 1000 : at + day;
        return { middle: (at + next) / 2, received, issued, title: isByMonth ? dayText(at).slice(0, 7) : dayText(at) };
      });
      byId("movement-caption").textContent = say(isByMonth ? "movement_by_month" : "movement_by_day", unit);
      draw("movement-chart", movementChart(bars, unit, bars[0].middle - (isByMonth ? 16 : 1) * day, Math.max(ends, bars.at(-1).middle + (isByMonth ? 16 : 1) * day)));
    };
    unitSelect.addEventListener("change", show);
    stepSelect.addEventListener("change", show);
    show();
  };

  // -- Cards -----------------------------------------------------------------------------------------------------------

  const [AT, ENTRY, BILL, LINE, IN, OUT, CHANGE, BY, KIND] = Array(9).keys();
  const isUnbilled = 1, isGap = 2;
  let cardTable;

  const figure = (title, value, isBad) => '<div' + (isBad ? ' class="bad"' : "") + "><dt>" + escaped(title) + "</dt><dd>" +
    escaped(value) + "</dd></div>";

  const showCard = (number) => {
    const row = rows[number], [opening, entries] = data.cards[number];
    const unit = strings[row[UNIT]];
    const text = (place) => strings[row[place]];
    const goods = [GOODS, GOODS_NAME, MODEL1, MODEL2].map(text).filter(Boolean).join(" ");
    const warehouse = [WAREHOUSE, WAREHOUSE_NAME].map(text).filter(Boolean).join(" ");
    byId("card-heading").textContent = say("card_title", goods, warehouse, text(STATUS));
    document.title = goods + " – " + words.title;
    let balance = tenThousandths(opening);
    const lines = entries.map((entry) => {
      balance += tenThousandths(entry[CHANGE]);
      return { entry, balance: quantityOf(balance) };
    });
    const closing = quantityOf(balance);
    byId("card-figures").innerHTML = figure(words.on_hand + (unit ? " (" + unit + ")" : ""), grouped(closing), balance < 0n) +
      figure(words.opening, grouped(opening)) + figure(words.movements, grouped(entries.length));
    const columns = ((received, issued, balances) => [
      { className: "time", data: ({ entry }, use) => (use === "display" ? timeText(entry[AT]).replace(/\S+/g, '<span class="short">$&</span>') : use === "sort" ? entry[AT] : "") },
      { data: ({ entry }, use) => (use === "display" ? escaped(strings[entry[ENTRY]]) : use === "sort" ? placeOf(entry[ENTRY]) : "") },
      { data: ({ entry }, use) => (use === "display" ? id(entry[BILL]) : use === "sort" ? placeOf(entry[BILL]) : "") },
      { className: "number secondary", data: ({ entry }, use) => (use === "sort" ? Number(entry[LINE]) : use === "display" ? String(entry[LINE] || "") : "") },
      { className: "number", data: ({ entry }, use) => (use === "display" ? entry[IN] === 0 ? "" : received(entry[IN]) : use === "sort" ? Number(entry[IN]) : "") },
      { className: "number", data: ({ entry }, use) => (use === "display" ? entry[OUT] === 0 ? "" : issued(entry[OUT]) : use === "sort" ? Number(entry[OUT]) : "") },
      { className: "number", data: (line, use) => (use === "display" ? balances(line.balance) : use === "sort" ? Number(line.balance) : "") },
      { className: "secondary", data: ({ entry }, use) => (use === "display" ? escaped(strings[entry[BY]]) : use === "sort" ? placeOf(entry[BY]) : "") },
    ])(aligned(entries.map((entry) => entry[IN])), aligned(entries.map((entry) => entry[OUT])), aligned(lines.map((line) => line.balance)));
    if (cardTable) {
      cardTable.destroy();
      byId("card-table").tBodies[0].replaceChildren();
    }
    cardTable = makeTable(byId("card-table"), byId("card-pager"), lines, columns.map((column) => ({ type: "num", searchable: false, ...column })),
      pageLengths[0], { createdRow: (line, { entry }) => { if (entry[KIND]) line.classList.add("unbilled"); } });
    const points = [{ x: Math.min(data.begins, entries[0]?.[AT] ?? data.begins), y: Number(opening), text: opening }];
    for (const { entry, balance: text } of lines) {
      const x = Math.max(entry[AT], points.at(-1).x);  // the hour that winter time repeats
      points.push({ x, y: Number(text), text, isGap: entry[KIND] === isGap, at: entry[AT] });
    }
    points.push({ x: Math.max(data.made, points.at(-1).x), y: Number(closing), text: closing });
    byId("card-chart-caption").textContent = say("stock_of", unit, dayText(points[0].x), grouped(opening), dayText(data.made), grouped(closing));
    draw("card-chart", stockChart(points, unit, (raw) => timeText(raw.at ?? raw.x)));
  };

  let shownCard, scrolledTo = 0;
  const route = () => {
    const number = /^#card-(\d+)$/.exec(location.hash)?.[1];
    const isCard = number !== undefined && Boolean(data.cards[number]);
    if (isCard && shownCard === undefined) scrolledTo = lastScroll;
    byId("overview").hidden = isCard;
    byId("card").hidden = !isCard;
    if (isCard) {
      showCard(number);
      scrollTo({ top: 0, behavior: "instant" });
      byId("card-heading").focus({ preventScroll: true });
    } else if (shownCard !== undefined) {
      document.title = words.title;
      redraw();
      scrollTo({ top: scrolledTo, behavior: "instant" });
      document.querySelector('#overview a[href="#card-' + shownCard + '"]')?.focus({ preventScroll: true });
    }
    shownCard = isCard ? number : undefined;
  };
  let lastScroll = 0, cameFromLedger = false;
  addEventListener("click", (event) => {
    if (!event.target.closest?.('a[href^="#card-"]')) return;
    lastScroll = scrollY;
    cameFromLedger = true;
  }, true);
  byId("card-back").addEventListener("click", (event) => {
    if (!cameFromLedger) return;
    event.preventDefault();
    history.back();
  });

  // -- All together ----------------------------------------------------------------------------------------------------

  for (const cell of document.querySelectorAll("td[data-row]")) {
    const number = cell.dataset.row;
    if (data.cards[number]) cell.innerHTML = linked(number, cell.innerHTML);
  }
  Chart.defaults.font.family = getComputedStyle(document.body).fontFamily;
  showTime();
  showLedger();
  addEventListener("hashchange", route);
  route();
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", redraw);
  // On paper stands every row that the filters leave, up to a bound, in light colours.
  let printed, shownLength;
  addEventListener("beforeprint", () => {
    document.documentElement.classList.add("printing");
    printed = shownCard === undefined ? ledgerTable : cardTable;
    shownLength = printed.page.len();
    printed.page.len(mostPrintedRows).draw();
    redraw();
  });
  addEventListener("afterprint", () => {
    document.documentElement.classList.remove("printing");
    printed.page.len(shownLength).draw();
    redraw();
  });
})();
