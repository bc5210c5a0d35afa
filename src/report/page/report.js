// The page's behaviour: a tree of objects with search, filters and orders, of which only the lines in sight exist.
//
// All texts come from the data block, and names in it are whatever somebody called a file. They are only ever set as
// text, never as markup.
"use strict";

(() => {
    const data = JSON.parse(document.getElementById("report-data").textContent);
    const byId = (id) => document.getElementById(id);
    const kindNames = ["file", "folder", "link", "device or pipe"];
    const rowHeight = 28;
    // Browsers cannot show anything taller; beyond it, scrolling skips lines.
    const tallest = 16_000_000;

    function element(name, text, className) {
        const made = document.createElement(name);
        if (text !== undefined) made.textContent = text;
        if (className) made.className = className;
        return made;
    }

    // --- The data.

    // A row is [top, path, kind, remarks, list or -1, error]; a folder without one is there for what is in it.
    function makeNode(top, path, kind, parent) {
        const name = path === "" ? data.tops[top] : path.slice(path.lastIndexOf("/") + 1);
        return { top, path, name, kind, parent, row: null, children: [], depth: parent ? parent.depth + 1 : 0,
                 isOpen: parent === null, isClosedInSearch: false, isKept: true, isHit: true, key: null };
    }

    const roots = data.tops.map((_, top) => makeNode(top, "", 1, null));
    const nodes = [];

    function readRows() {
        const folders = roots.map((root) => new Map([["", root]]));
        const folderAt = (top, path) => {
            const missing = [];
            let node;
            for (let rest = path; !(node = folders[top].get(rest)); rest = rest.slice(0, Math.max(rest.lastIndexOf("/"), 0)))
                missing.push(rest);
            while (missing.length > 0) {
                const child = makeNode(top, missing.pop(), 1, node);
                node.children.push(child);
                folders[top].set(child.path, child);
                node = child;
            }
            return node;
        };
        for (const row of data.rows) {
            const [top, path, kind] = row;
            let node;
            if (path === "") {
                node = roots[top];
                node.kind = kind;
            } else if (kind === 1) {
                node = folderAt(top, path);
            } else {
                const parent = folderAt(top, path.slice(0, Math.max(path.lastIndexOf("/"), 0)));
                node = makeNode(top, path, kind, parent);
                parent.children.push(node);
            }
            node.row = row;
            nodes.push(node);
        }
    }

    const remarksOf = (node) => (node.row ? node.row[3] : 0);
    const listOf = (node) => (node.row && node.row[4] >= 0 ? data.lists[node.row[4]] : null);
    const fullPath = (node) => {
        const top = data.tops[node.top];
        const separator = data.separators[node.top];
        if (node.path === "") return top;
        return top + (/[\\/]$/.test(top) ? "" : separator) + node.path.replaceAll("/", separator);
    };
    const ownerOf = (node) => listOf(node)?.owner ?? "";

    function ownEntriesOf(list) {
        if (list.own === undefined)
            list.own = list.entries.filter((entry) => !entry[5]).map((entry) => `${entry[0]} ${entry[1]}: ${entry[2]}`).join("; ");
        return list.own;
    }
    const entriesOf = (node) => (listOf(node) ? ownEntriesOf(listOf(node)) : node.row && node.row[5] ? node.row[5] : "");

    // --- What is shown.

    const state = { search: "", remarks: 0, account: -1, reach: "named", view: "tree", order: "path", isDescending: false };
    let shown = [];
    let chosen = null;

    const isFiltered = () => state.search !== "" || state.remarks !== 0 || state.account >= 0;

    // One byte for each list: whether the account has to do with it.
    function listsOfAccount() {
        if (state.account < 0) return null;
        const property = { named: "named", read: "readers", write: "writers", owner: "ownerIndex" }[state.reach];
        return Uint8Array.from(data.lists, (list) =>
            property === "ownerIndex" ? list.ownerIndex === state.account : list[property].includes(state.account));
    }

    function filter() {
        const lists = listsOfAccount();
        const words = state.search.toLowerCase();
        const clear = (node) => { node.isKept = node.isHit = false; };
        forAll(clear);
        let hits = 0;
        for (const node of nodes) {
            if (state.remarks !== 0 && (remarksOf(node) & state.remarks) === 0) continue;
            if (lists && !(node.row[4] >= 0 && lists[node.row[4]])) continue;
            if (words !== "") {
                node.key ??= fullPath(node).toLowerCase();
                if (!node.key.includes(words)) continue;
            }
            node.isHit = true;
            ++hits;
            for (let kept = node; kept && !kept.isKept; kept = kept.parent) kept.isKept = true;
        }
        byId("count").textContent = `${hits.toLocaleString("en")} of ${nodes.length.toLocaleString("en")} objects`;
    }

    // Without recursion: trees are as deep as somebody made them.
    function forAll(visit) {
        const pending = [...roots];
        while (pending.length > 0) {
            const node = pending.pop();
            visit(node);
            for (const child of node.children) pending.push(child);
        }
    }

    const bits = (mask) => {
        let count = 0;
        for (let rest = mask >>> 0; rest !== 0; rest &= rest - 1) ++count;
        return count;
    };

    // What a line is sorted by; the original order is that of paths.
    const sortKeys = {
        owner: (node) => ownerOf(node).toLowerCase(),
        remarks: (node) => -bits(remarksOf(node)),
        entries: (node) => entriesOf(node).toLowerCase(),
    };

    function sorted(list) {
        if (state.order === "path") return state.isDescending ? [...list].reverse() : list;
        const keyed = list.map((node) => [sortKeys[state.order](node), node]);
        const sign = state.isDescending ? -1 : 1;
        keyed.sort(([one], [other]) => (one < other ? -sign : one > other ? sign : 0));
        return keyed.map(([, node]) => node);
    }

    const isOpen = (node) => (isFiltered() ? !node.isClosedInSearch : node.isOpen);

    function collect() {
        if (state.view === "list") {
            shown = sorted(nodes.filter((node) => node.isHit));
            return;
        }
        shown = [];
        const pending = [...roots].reverse();
        while (pending.length > 0) {
            const node = pending.pop();
            if (!node.isKept) continue;
            shown.push(node);
            if (!isOpen(node)) continue;
            const children = sorted(node.children);
            for (let i = children.length - 1; i >= 0; --i) pending.push(children[i]);
        }
    }

    function update() {
        filter();
        rearrange();
    }

    function rearrange() {
        collect();
        byId("height").style.height = `${Math.min(shown.length * rowHeight, tallest)}px`;
        byId("rows").setAttribute("aria-rowcount", shown.length);
        draw();
    }

    // --- Drawing.

    const grid = byId("rows");

    function remarkElements(mask) {
        const chips = document.createDocumentFragment();
        data.remarks.forEach((remark, index) => {
            if ((mask & (1 << index)) === 0) return;
            const chip = element("span", remark.code, remark.isGrave ? "remark grave" : "remark");
            chip.title = remark.text;
            chips.append(chip, " ");
        });
        return chips;
    }

    function drawLine(node, index, offset) {
        const line = element("div", undefined, node.isHit && node.row ? "line" : "line passed");
        line.id = `line-${index}`;
        line.dataset.index = index;
        line.style.transform = `translateY(${offset}px)`;
        line.setAttribute("role", "row");
        line.setAttribute("aria-rowindex", index + 1);
        line.setAttribute("aria-selected", node === chosen);
        const name = element("div");
        if (state.view === "tree") {
            line.setAttribute("aria-level", node.depth + 1);
            name.style.paddingLeft = `${Math.min(node.depth, 40)}em`;
            const hasChildren = node.children.length > 0;
            if (hasChildren) line.setAttribute("aria-expanded", isOpen(node));
            name.append(element("span", hasChildren ? (isOpen(node) ? "\u25BE" : "\u25B8") : "", "twist"));
        }
        const label = element("span", state.view === "tree" ? node.name : fullPath(node));
        label.title = fullPath(node);
        name.append(label);
        if (node.kind === 1 && node.path !== "") name.append(element("span", "/", "kind"));
        const remarks = element("div");
        remarks.append(remarkElements(remarksOf(node)));
        line.append(name, element("div", ownerOf(node)), remarks, element("div", entriesOf(node)));
        for (const cell of line.children) cell.setAttribute("role", "gridcell");
        return line;
    }

    function firstInSight() {
        const room = shown.length * rowHeight - grid.clientHeight;
        const travel = Math.min(shown.length * rowHeight, tallest) - grid.clientHeight;
        return travel <= 0 ? 0 : (grid.scrollTop / travel) * room / rowHeight;
    }

    function draw() {
        const first = Math.max(0, firstInSight());
        const begin = Math.max(0, Math.floor(first) - 5);
        const end = Math.min(shown.length, Math.ceil(first + grid.clientHeight / rowHeight) + 5);
        const lines = document.createDocumentFragment();
        for (let i = begin; i < end; ++i)
            lines.append(drawLine(shown[i], i, grid.scrollTop + (i - first) * rowHeight));
        grid.replaceChildren(byId("height"), lines);
        const place = shown.indexOf(chosen);
        if (place >= begin && place < end) grid.setAttribute("aria-activedescendant", `line-${place}`);
        else grid.removeAttribute("aria-activedescendant");
    }

    function reveal(index) {
        const first = firstInSight();
        const inSight = grid.clientHeight / rowHeight;
        if (index >= Math.ceil(first) && index + 1 <= first + inSight) return;
        const wanted = index < first ? index : index + 1 - inSight;
        const room = shown.length - inSight;
        const travel = Math.min(shown.length * rowHeight, tallest) - grid.clientHeight;
        grid.scrollTop = room <= 0 ? 0 : (Math.max(0, wanted) / room) * travel;
    }

    // --- Details.

    function tableOf(titles, lines) {
        const table = element("table");
        const head = table.createTHead().insertRow();
        for (const title of titles) head.append(element("th", title));
        const body = table.createTBody();
        for (const line of lines) {
            const row = element("tr");  // insertRow counts the rows that are there
            for (const cell of line) row.append(element("td", cell));
            body.append(row);
        }
        return table;
    }

    function listElements(list) {
        const parts = document.createDocumentFragment();
        parts.append(element("p", `Owner: ${list.owner}`), element("p", `Inherits: ${list.inherits}`));
        for (const note of list.notes) parts.append(element("p", note));
        if (list.entries.length > 0)
            parts.append(tableOf(data.titles, list.entries.map((entry) => entry.slice(0, 5))));
        return parts;
    }

    function showDetails() {
        const pane = byId("details");
        pane.replaceChildren();
        if (!chosen) {
            pane.append(element("p", "Choose an object to see its list.", "quiet"));
            return;
        }
        pane.append(element("h3", fullPath(chosen), "path"), element("p", kindNames[chosen.kind], "quiet"));
        if (!chosen.row) {
            pane.append(element("p", "It has what its folder hands down; something below it differs."));
            return;
        }
        const remarks = element("ul");
        data.remarks.forEach((remark, index) => {
            if ((remarksOf(chosen) & (1 << index)) !== 0) remarks.append(element("li", `${remark.code}: ${remark.text}`));
        });
        if (remarks.childElementCount > 0) pane.append(remarks);
        if (chosen.row[5]) pane.append(element("p", chosen.row[5]));
        const list = listOf(chosen);
        if (!list) return;
        pane.append(listElements(list));
        if (chosen.kind === 1) pane.append(element("p", `Hands down: ${list.handsDown}`));
        for (const [title, accounts] of [["Can read", list.readers], ["Can write", list.writers]]) {
            if (accounts.length === 0) continue;
            pane.append(element("h3", title), element("p", accounts.map((index) => data.accounts[index].name).join(", ")));
        }
    }

    function choose(index) {
        if (index < 0 || index >= shown.length) return;
        chosen = shown[index];
        reveal(index);
        draw();
        showDetails();
    }

    function setOpen(node, open) {
        if (isFiltered()) node.isClosedInSearch = !open;
        else node.isOpen = open;
        rearrange();
    }

    // --- What the reader does.

    grid.addEventListener("scroll", draw, { passive: true });
    window.addEventListener("resize", draw);

    grid.addEventListener("click", (event) => {
        const line = event.target.closest(".line");
        if (!line) return;
        const node = shown[line.dataset.index];
        if (event.target.classList.contains("twist") && node.children.length > 0) setOpen(node, !isOpen(node));
        choose(shown.indexOf(node));
    });
    grid.addEventListener("dblclick", (event) => {
        const line = event.target.closest(".line");
        const node = line && shown[line.dataset.index];
        if (node && state.view === "tree" && node.children.length > 0 && !event.target.classList.contains("twist"))
            setOpen(node, !isOpen(node));
    });
    grid.addEventListener("keydown", (event) => {
        const place = shown.indexOf(chosen);
        const page = Math.max(1, Math.floor(grid.clientHeight / rowHeight) - 1);
        const last = shown.length - 1;
        const isTree = state.view === "tree" && chosen !== null && place >= 0;
        const moves = {
            ArrowDown: () => choose(Math.min(place + 1, last)),
            ArrowUp: () => choose(Math.max(place - 1, 0)),
            PageDown: () => choose(Math.min(place + page, last)),
            PageUp: () => choose(Math.max(place - page, 0)),
            Home: () => choose(0),
            End: () => choose(last),
            ArrowRight: () => {
                if (!isTree || chosen.children.length === 0) return;
                if (isOpen(chosen)) choose(place + 1);
                else setOpen(chosen, true);
            },
            ArrowLeft: () => {
                if (!isTree) return;
                if (chosen.children.length > 0 && isOpen(chosen)) setOpen(chosen, false);
                else if (chosen.parent) choose(shown.indexOf(chosen.parent));
            },
            Enter: () => { if (isTree && chosen.children.length > 0) setOpen(chosen, !isOpen(chosen)); },
        };
        if (event.ctrlKey || event.altKey || event.metaKey || !moves[event.key]) return;
        event.preventDefault();
        moves[event.key]();
    });

    function refilter() {
        forAll((node) => { node.isClosedInSearch = false; });
        grid.scrollTop = 0;
        update();
    }

    byId("search").addEventListener("input", (event) => { state.search = event.target.value; refilter(); });
    byId("account").addEventListener("change", (event) => { state.account = Number(event.target.value); refilter(); });
    byId("reach").addEventListener("change", (event) => { state.reach = event.target.value; refilter(); });
    byId("view").addEventListener("change", (event) => { state.view = event.target.value; grid.scrollTop = 0; rearrange(); });
    byId("remark-boxes").addEventListener("change", () => {
        state.remarks = 0;
        for (const box of byId("remark-boxes").querySelectorAll("input:checked")) state.remarks |= 1 << box.value;
        refilter();
    });
    const openAll = (open) => {
        forAll((node) => { node.isOpen = open || node.parent === null; node.isClosedInSearch = !open; });
        rearrange();
    };
    byId("open-all").addEventListener("click", () => openAll(true));
    byId("close-all").addEventListener("click", () => openAll(false));
    byId("clear").addEventListener("click", () => setFilters({}));

    for (const title of byId("titles").children) {
        title.firstElementChild.addEventListener("click", () => {
            const order = title.dataset.order;
            state.isDescending = state.order === order && !state.isDescending;
            state.order = order;
            for (const other of byId("titles").children) other.removeAttribute("aria-sort");
            title.setAttribute("aria-sort", state.isDescending ? "descending" : "ascending");
            rearrange();
        });
    }

    function setFilters({ remark = -1, account = -1, reach = "named" }) {
        Object.assign(state, { search: "", remarks: remark >= 0 ? 1 << remark : 0, account, reach });
        byId("search").value = "";
        byId("account").value = account;
        byId("reach").value = reach;
        for (const box of byId("remark-boxes").querySelectorAll("input")) box.checked = Number(box.value) === remark;
        refilter();
    }

    // The figures of the summary lead to the objects that they count.
    function link(cell, filters) {
        const button = element("button", cell.textContent, "link");
        button.type = "button";
        button.addEventListener("click", () => {
            setFilters(filters);
            byId("explorer").scrollIntoView();
        });
        cell.replaceChildren(button);
    }
    for (const cell of document.querySelectorAll("[data-remark]")) link(cell, { remark: Number(cell.dataset.remark) });
    for (const cell of document.querySelectorAll("[data-account]"))
        link(cell, { account: Number(cell.dataset.account), reach: cell.dataset.reach });

    function fillTools() {
        byId("account").append(new Option("Any account", -1));
        data.accounts.forEach((account, index) => byId("account").append(new Option(account.name, index)));
        const used = nodes.reduce((mask, node) => mask | remarksOf(node), 0);
        data.remarks.forEach((remark, index) => {
            if ((used & (1 << index)) === 0) return;
            const label = element("label");
            const box = element("input");
            box.type = "checkbox";
            box.value = index;
            label.title = remark.text;
            label.append(box, ` ${remark.code}`);
            byId("remark-boxes").append(label);
        });
    }

    // --- On paper stands what the filters leave.

    window.addEventListener("beforeprint", () => {
        const lists = new Set();
        const lines = [];
        for (const node of nodes) {
            if (!node.isHit) continue;
            const list = node.row[4];
            if (list >= 0) lists.add(list);
            const codes = data.remarks.filter((_, index) => remarksOf(node) & (1 << index)).map((remark) => remark.code);
            lines.push([fullPath(node), codes.join(", "), list >= 0 ? String(list + 1) : node.row[5] ?? ""]);
        }
        const parts = [tableOf(["Object", "Remarks", "List"], lines)];
        for (const list of [...lists].sort((one, other) => one - other))
            parts.push(element("h3", `List ${list + 1}`), listElements(data.lists[list]),
                       element("p", `A folder hands down: ${data.lists[list].handsDown}`));
        byId("print").replaceChildren(...parts);
    });
    window.addEventListener("afterprint", () => byId("print").replaceChildren());

    readRows();
    fillTools();
    byId("explorer").hidden = false;
    update();
    showDetails();
})();
