// Measures the web console beside its goals: node bench.mjs [--minutes N] [--no-million]
//   QVADMIN, QV_BENCH_WEB_DATA: the programs; QV_PAGE_MODULES: where the npm packages of the page's tests are.
// Ends with 1 when something could not be measured, and with 0 whatever the figures are.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from "node:fs";
import { Agent, request } from "node:http";
import { cpus, loadavg, tmpdir } from "node:os";
import { join } from "node:path";
import { parseArgs } from "node:util";
import { gzipSync } from "node:zlib";
import { launch, password, serve } from "../../tests/web/page/support.mjs";

const { QVADMIN, QV_BENCH_WEB_DATA } = process.env;
const { values: options } = parseArgs({ options: { minutes: { type: "string", default: "10" }, "no-million": { type: "boolean", default: false } } });
const minutes = Number(options.minutes);
assert.ok(minutes >= 0, "--minutes takes a number");

/** As many as keep each below the 50 requests a second that one has. */
const kReaders = 40;
const kFirstNames = ["anna", "bertrand", "chloe", "dominik", "eleonora", "jürgen", "katrin", "søren", "ulrike", "josé"];
const kLastNames = ["abel", "brandt", "connor", "eriksson", "fischer", "ivanova", "kowalska", "lindqvist", "müller", "wagner"];

const pause = time => new Promise(resolve => setTimeout(resolve, time));
const now = () => performance.now();
const sorted = numbers => [...numbers].sort((a, b) => a - b);
const part = (numbers, share) => sorted(numbers)[Math.min(numbers.length - 1, Math.floor(numbers.length * share))];
const median = numbers => part(numbers, 0.5);
const worst = numbers => Math.max(...numbers);
const digits = value => (value >= 100 ? value.toFixed(0) : value >= 10 ? value.toFixed(1) : value.toFixed(2));
const listed = (unit, ...numbers) => `${numbers.map(digits).join(" / ")} ${unit}`;

const lines = [];
function report(what, goal, measured) {
    lines.push([what, goal, measured]);
    console.error(`${what}: ${measured} (goal: ${goal})`);
}

// ---- The server -----------------------------------------------------------------------------------------------------

/** Processor time of a process, in milliseconds. */
const processorTime = pid =>
    readdirSync(`/proc/${pid}/task`).reduce(
        (sum, thread) => sum + Number(readFileSync(`/proc/${pid}/task/${thread}/schedstat`, "utf8").split(" ")[0]) / 1e6,
        0,
    );
const resident = pid => Number(readFileSync(`/proc/${pid}/status`, "utf8").match(/VmRSS:\s+(\d+)/)[1]) / 1024;

/** Somebody who has signed in. */
class Client {
    constructor(url) {
        this.url = url;
        this.agent = new Agent({ keepAlive: true, maxSockets: 1 });
        this.cookie = "";
        this.csrf = "";
    }
    async ask(method, path, body) {
        const text = body === undefined ? "" : JSON.stringify(body);
        const answer = await new Promise((resolve, reject) => {
            const asked = request(this.url + path, {
                method,
                agent: this.agent,
                headers: {
                    Cookie: this.cookie,
                    "X-CSRF-Token": this.csrf,
                    ...(text ? { "Content-Type": "application/json", "Content-Length": Buffer.byteLength(text) } : {}),
                },
            });
            asked.on("error", reject);
            asked.on("response", response => {
                const parts = [];
                response.on("data", data => parts.push(data));
                response.on("end", () => resolve({ status: response.statusCode, headers: response.headers, text: Buffer.concat(parts).toString() }));
            });
            asked.end(text);
        });
        assert.equal(answer.status, 200, `${method} ${path}: ${answer.text.slice(0, 300)}`);
        const [cookie] = answer.headers["set-cookie"] ?? [];
        this.cookie = cookie ? cookie.split(";")[0] : this.cookie;
        return answer.text;
    }
    read = async path => JSON.parse(await this.ask("GET", `/api/v1${path}`));
    run = async (command, parameters) => JSON.parse(await this.ask("POST", `/api/v1/commands/${command}`, { parameters }));
    post = async (path, body) => JSON.parse(await this.ask("POST", `/api/v1${path}`, body));
    async signIn(login) {
        this.csrf = (await this.post("/session", { login, password })).csrf;
    }
    close() {
        this.agent.destroy();
    }
}

/** Asks one after the other, each time as another reader. @return how long each took, and the processor time of each. */
async function asked(server, clients, count, ask) {
    const times = [];
    const before = processorTime(server.pid);
    for (let i = 0; i < count; ++i) {
        const begin = now();
        await ask(clients[i % clients.length], i);
        times.push(now() - begin);
    }
    return { times, each: (processorTime(server.pid) - before) / count };
}

/** @return requests a second, each reader asking for the next one as soon as the last is answered. */
async function rate(clients, count, ask) {
    let next = 0;
    const begin = now();
    await Promise.all(
        clients.map(async client => {
            while (next < count) {
                await ask(client, next++);
            }
        }),
    );
    return (count * 1000) / (now() - begin);
}

/** What people type who look for somebody; each gives another text. */
const searchText = i => {
    const texts = [
        kLastNames[i % 10],
        `${kFirstNames[Math.floor(i / 7) % 10]} ${kLastNames[i % 10]}`,
        `${kFirstNames[i % 10].slice(0, 3)} hamburg`,
        `engineer ${kLastNames[i % 10].slice(0, 4)}`,
        `nobody${i}`,
        String(1000 + ((i * 7919) % 9000)),
    ];
    return texts[i % texts.length];
};
const search = (client, i) => client.read(`/users?q=${encodeURIComponent(searchText(i))}&limit=100`);

// ---- The directory --------------------------------------------------------------------------------------------------

const folder = mkdtempSync(join(tmpdir(), "qv-bench-web-"));

function makeDirectory(name, users, readers) {
    const file = join(folder, name);
    const begin = now();
    execFileSync(QV_BENCH_WEB_DATA, [file, String(users)], { stdio: "inherit" });
    const env = { ...process.env, QVADMIN_DB: `sqlite:${file}` };
    const batch = ["user create Admin --super", "user password set Admin --password-file password"];
    for (let i = 0; i < readers; ++i) {
        batch.push(`user create reader${i}`, `user password set reader${i} --password-file password`, `console set reader${i} read-only`);
    }
    writeFileSync(join(folder, "password"), `${password}\n`, { mode: 0o600 });
    writeFileSync(join(folder, "batch"), batch.join("\n"));
    execFileSync(QVADMIN, ["batch", join(folder, "batch"), "--stop-on-error"], { env, cwd: folder, stdio: ["ignore", "ignore", "pipe"] });
    console.error(`${name}: ${users} users, made in ${digits((now() - begin) / 1000)} s`);
    return env;
}

async function signedIn(server, count) {
    const clients = [];
    for (let i = 0; i < count; ++i) {
        const client = new Client(server.url);
        await client.signIn(`reader${i}`);
        clients.push(client);
        await pause(110); // ten a second are let in
    }
    return clients;
}

// ---- Requests -------------------------------------------------------------------------------------------------------

async function measureServer(server, clients) {
    const [first] = clients;
    await asked(server, clients, 40, search);
    const searches = await asked(server, clients, 400, search);
    report("search, over HTTP: p50 / p99", "p99 15 ms", listed("ms", median(searches.times), part(searches.times, 0.99)));
    report("search, processor time of the server", "3 ms", listed("ms", searches.each));

    const own = new Map();
    const renew = async () => {
        for (const client of clients) {
            own.set(client, (await client.read("/users?limit=1")).result);
        }
    };
    await renew();
    const ownPage = (client, i) => client.read(`/users?result=${own.get(client)}&offset=${(i * 7919) % 99000}&limit=100`);
    const person = (client, i) => client.run("user/show", { USER: `id:${1 + ((i * 7919) % 100000)}` });
    const flat = (client, i) => client.read(`/tree?parent=view:3&offset=${((i * 200) % 10000)}&limit=200`);
    const ten = (client, i) => client.read(`/tree?parent=group:${1 + (i % 1110)}`);
    const why = (client, i) => client.run("right/explain", { USER: `id:${1 + ((i * 7919) % 100000)}`, GENRE: "mail", FUNCTION: "size" });
    assert.equal((await ownPage(first, 1)).rows.length, 100);
    assert.equal((await flat(first, 0)).rows.length, 200);
    assert.equal((await ten(first, 0)).rows.length, 10);
    const cost = async (what, goal, ask) => {
        await asked(server, clients, 40, ask);
        report(`processor time of ${what}`, goal, listed("ms", (await asked(server, clients, 400, ask)).each));
    };
    // Many at once, by the clock of the wall, and as many as the processor time of each leaves room for.
    const pace = async (what, goal, count, ask) => {
        await renew();
        await pause(5000); // so that each may ask much at once again
        const before = processorTime(server.pid);
        const perSecond = await rate(clients, count, ask);
        const each = (processorTime(server.pid) - before) / count;
        report(`${what} a second; one processor's worth`, goal, `${digits(perSecond)}; ${digits(1000 / each)}`);
    };
    await cost("a page of 100 rows", "0.7 ms", ownPage);
    await cost("200 groups", "0.6 ms", flat);
    await cost("10 groups", "0.09 ms", ten);
    await cost("a user", "0.25 ms", person);
    await cost("an answer to Why", "0.45 ms", why);
    await cost("a file of the page", "0.01 ms", client => client.ask("GET", "/icon.svg"));
    await pace("searches", "600", 1000, search);
    await pace("pages of 100 rows", "3000", 4000, ownPage);
    await pace("users", "4000", 4000, person);
    await pause(5000);
}

async function saveTimes(admin, count) {
    const times = [];
    for (let i = 0; i < count; ++i) {
        const begin = now();
        await admin.run("user/set", { USER: [`id:${1 + i}`], title: `Title ${now()}` });
        times.push(now() - begin);
        await pause(25);
    }
    return times;
}

async function measureSaves(admin) {
    report("save, alone: p99", "20 ms", listed("ms", part(await saveTimes(admin, 200), 0.99)));
    const rows = Array.from({ length: 20000 }, (_, i) => `imported${i},Imported Person ${i},Clerk\n`);
    const text = `login,name,title\n${rows.join("")}`;
    for (let begin = 0; begin < text.length; begin += 500000) {
        await admin.post("/imports/text", { text: text.slice(begin, begin + 500000), first: begin === 0 });
    }
    const begin = now();
    const { job: { id } } = await admin.post("/imports", { columns: ["login", "name", "title"], delimiter: "," });
    const times = [];
    let job;
    do {
        times.push(...(await saveTimes(admin, 5)));
        job = await admin.read(`/imports?id=${id}`);
    } while (!job.over);
    assert.equal(job.created, 20000, JSON.stringify({ ...job, rows: undefined }));
    const time = (now() - begin) / 1000;
    report(`save, beside an import of 20,000 (${digits(time)} s): p99 of ${times.length}`, "250 ms", listed("ms", part(times, 0.99)));
}

// ---- The page -------------------------------------------------------------------------------------------------------

function measureWeight() {
    const dist = new URL("../../web/page/dist/", import.meta.url);
    const sizes = ["signed_in.html", "app.js", "style.css"].map(name => gzipSync(readFileSync(new URL(name, dist)), { level: 9 }).length / 1024);
    report("page, gzip: html + js + css, three languages in it", "60 KiB", `${sizes.map(size => size.toFixed(1)).join(" + ")} = ${digits(sizes.reduce((a, b) => a + b))} KiB`);
}

const kRows = "#people .row:not(.head) .login bdi:not(:empty)";

/** A page of a browser that has nothing in its caches but the session. */
async function openCold(browser, server, client, path = "/directory") {
    const context = await browser.newContext({ viewport: { width: 1440, height: 900 }, locale: "en-GB" });
    const [name, value] = client.cookie.split("=");
    await context.addCookies([{ name, value, url: server.url }]);
    await context.addInitScript(rows => {
        window.rowsAt = new Promise(resolve => {
            const look = () => (document.querySelector(rows) ? requestAnimationFrame(() => resolve(performance.now())) : requestAnimationFrame(look));
            look();
        });
    }, kRows);
    const page = await context.newPage();
    page.setDefaultTimeout(30000);
    await page.goto(server.url + path);
    return page;
}

async function measureFirstPaint(browser, server, clients) {
    const paints = [];
    const rows = [];
    for (let i = 0; i < 7; ++i) {
        const page = await openCold(browser, server, clients[i]);
        rows.push(await page.evaluate(() => window.rowsAt));
        // It is noted when the frame that has the rows already is on screen.
        const paint = await page.waitForFunction(() => performance.getEntriesByName("first-contentful-paint")[0]?.startTime);
        paints.push(await paint.jsonValue());
        await page.context().close();
    }
    report("first contentful paint, cold: median / worst of 7", "150 / 300 ms", listed("ms", median(paints), worst(paints)));
    report("rows of the first list on screen: median / worst of 7", "300 / 600 ms", listed("ms", median(rows), worst(rows)));
}

/** Has something done in the page, and measures until it has an effect, as of the frame that shows it. */
const timed = (page, act, argument) =>
    page.evaluate(
        ([body, given, kRows]) =>
            new Promise(resolve => {
                const [begin, isDone] = new Function("given", "kRows", `return (${body})(given, kRows)`)(given, kRows);
                const look = () => (isDone() ? resolve(performance.now() - begin) : requestAnimationFrame(look));
                requestAnimationFrame(look);
            }),
        [act.toString(), argument, kRows],
    );

async function measureTree(browser, server, client) {
    const open = ([name, first]) => {
        const line = [...document.querySelectorAll("#tree .branch")].find(one => one.querySelector(".name").textContent === name);
        const begin = performance.now();
        line.querySelector(".twist").click();
        return [begin, () => [...document.querySelectorAll("#tree .name")].some(one => one.textContent.startsWith(first))];
    };
    const times = { Flat: [], Hundred: [], Company: [] };
    for (let i = 0; i < 5; ++i) {
        const page = await openCold(browser, server, client);
        await page.locator("#tree .name", { hasText: "Company" }).waitFor();
        for (const name of Object.keys(times)) {
            await page.locator("#tree").evaluate(tree => (tree.scrollTop = 0));
            times[name].push(await timed(page, open, [name, `${name} Team `]));
            await page.locator("#tree .branch", { hasText: new RegExp(`^${name}[0-9,]*$`) }).locator(".twist").click();
            await page.waitForTimeout(100);
        }
        await page.context().close();
    }
    report("open 10,000 groups; 100; 10: median of 5", "50 ms each", Object.values(times).map(all => digits(median(all))).join("; ") + " ms");
}

async function metrics(session) {
    const { metrics: all } = await session.send("Performance.getMetrics");
    return Object.fromEntries(all.map(one => [one.name, one.value]));
}

/** Has something scroll for a while. @return what a frame took of the main thread, and the times between frames. */
async function scrolled(page, session, scroll) {
    await page.evaluate(() => {
        window.frames_ = [];
        const note = time => {
            window.frames_?.push(time);
            window.frames_ && requestAnimationFrame(note);
        };
        requestAnimationFrame(note);
    });
    const before = await metrics(session);
    await scroll();
    const after = await metrics(session);
    const frames = await page.evaluate(() => {
        const all = window.frames_;
        window.frames_ = null;
        return all;
    });
    const gaps = frames.slice(1).map((time, i) => time - frames[i]);
    const each = name => ((after[name] - before[name]) * 1000) / frames.length;
    return { task: each("TaskDuration"), script: each("ScriptDuration"), gaps };
}

async function measureScroll(browser, server, client) {
    const page = await openCold(browser, server, client);
    await page.locator("#tree .name", { hasText: "Flat" }).waitFor();
    await page.locator("#tree .branch", { hasText: "Flat" }).locator(".twist").click();
    await page.getByText("Flat Team 1", { exact: true }).waitFor();
    const session = await page.context().newCDPSession(page);
    await session.send("Performance.enable");
    const wheel = async id => {
        await page.locator(id).hover();
        for (let i = 0; i < 120; ++i) {
            await page.mouse.wheel(0, 100);
            await page.waitForTimeout(16);
        }
    };
    const drag = id =>
        page.locator(id).evaluate(
            box =>
                new Promise(resolve => {
                    const begin = performance.now();
                    const step = time => {
                        const share = Math.min(1, (time - begin) / 3000);
                        box.scrollTop = share * (box.scrollHeight - box.clientHeight);
                        share < 1 ? requestAnimationFrame(step) : resolve();
                    };
                    requestAnimationFrame(step);
                }),
        );
    const goals = [8, 12, 8, 16];
    const gaps = [];
    const ways = [["list, wheel", wheel, "#people"], ["list, bar dragged", drag, "#people"], ["tree, wheel", wheel, "#tree"], ["tree, bar dragged", drag, "#tree"]];
    for (const [i, [what, way, id]] of ways.entries()) {
        await page.locator(id).evaluate(box => (box.scrollTop = 0));
        const found = await scrolled(page, session, () => way(id));
        gaps.push(...found.gaps);
        report(`scroll, main thread a frame, script in it: ${what}`, `${goals[i]} ms`, listed("ms", found.task, found.script));
        await page.waitForTimeout(500);
    }
    const within = (100 * gaps.filter(gap => gap <= 17.5).length) / gaps.length;
    report("frames within 17 ms; over 50 ms", "95 %; none", `${digits(within)} %; ${gaps.filter(gap => gap > 50).length} of ${gaps.length}`);
    report("elements in the document", "1500", String(await page.evaluate(() => document.querySelectorAll("*").length)));
    await page.context().close();

    const jumps = [];
    for (let i = 0; i < 5; ++i) {
        const other = await openCold(browser, server, client);
        await other.evaluate(() => window.rowsAt);
        jumps.push(
            await timed(other, share => {
                const box = document.getElementById("people");
                const begin = performance.now();
                box.scrollTop = share * box.scrollHeight;
                const middle = Math.floor(box.scrollTop / 30) + 5;
                return [begin, () => (document.getElementById(`person-${middle}`)?.querySelector(".login bdi")?.textContent ?? "") !== ""];
            }, 0.3 + i * 0.1),
        );
        await other.context().close();
    }
    report("jump into 100,000 rows none of which were read: median / worst of 5", "100 ms", listed("ms", median(jumps), worst(jumps)));
}

async function measureKeys(browser, server, client) {
    const page = await openCold(browser, server, client);
    await page.evaluate(() => window.rowsAt);
    const times = [];
    for (let i = 0; i < 60; ++i) {
        times.push(
            await timed(page, text => {
                const field = document.querySelector(".search input");
                const before = document.querySelector("#content .total").textContent;
                const begin = performance.now();
                Object.getOwnPropertyDescriptor(HTMLInputElement.prototype, "value").set.call(field, text);
                field.dispatchEvent(new InputEvent("input", { bubbles: true }));
                return [begin, () => document.querySelector("#content .total").textContent !== before];
            }, i % 2 === 0 ? kLastNames[(i / 2) % 10] + " " + kFirstNames[Math.floor(i / 20) % 10].slice(0, 2 + (i % 3)) : ""),
        );
    }
    report("key press to rows: median / p99 of 60", "30 / 80 ms", listed("ms", median(times), part(times, 0.99)));
    await page.context().close();
}

/** Scrolls, looks, and searches as somebody who works all day, in a hurry. */
async function measureUse(browser, server, client) {
    const page = await openCold(browser, server, client);
    await page.evaluate(() => window.rowsAt);
    const session = await page.context().newCDPSession(page);
    await session.send("Performance.enable");
    await session.send("HeapProfiler.enable");
    const heap = async () => {
        await session.send("HeapProfiler.collectGarbage");
        return (await metrics(session)).JSHeapUsedSize / (1 << 20);
    };
    const samples = [[resident(server.pid), await heap()]];
    const length = minutes * 60000;
    const begin = now();
    for (let i = 0; now() - begin < length; ++i) {
        await page.locator("#people").evaluate((box, share) => (box.scrollTop = share * box.scrollHeight), (i * 0.37) % 1);
        await page.waitForTimeout(150);
        if (i % 5 === 4) {
            await page.locator(".search input").fill(i % 10 === 9 ? "" : kLastNames[(i * 3) % 10]);
            await page.waitForTimeout(300);
        }
        if (i % 25 === 24) {
            await page.locator(kRows).first().click();
            await page.waitForTimeout(500);
        }
        if (now() - begin > (samples.length * length) / 10) {
            samples.push([resident(server.pid), await heap()]);
        }
    }
    samples.push([resident(server.pid), await heap()]);
    const residents = samples.map(one => one[0]);
    report(`resident while in use for ${minutes} minutes: first, then every tenth`, "flat", residents.map(digits).join(" "));
    report(`JavaScript heap after ${minutes} minutes`, "15 MiB", listed("MiB", samples.at(-1)[1]));
    await page.context().close();
}

async function measureHundredThousand() {
    const env = makeDirectory("hundred-thousand.db", 100000, kReaders);
    const begin = now();
    const server = await serve(env);
    const admin = new Client(server.url);
    await admin.signIn("Admin");
    assert.equal((await admin.read("/users")).total, 100001 + kReaders);
    report("start to the first list, 100,000 users", "", listed("s", (now() - begin) / 1000));
    const atStart = resident(server.pid);
    for (const name of ["New", "Newer"]) {
        await admin.run("group/create", { PATH: `/Company/${name}` });
        await admin.read("/users");
    }
    report("resident: after start / after two rebuilds", "90 / 120 MiB", listed("MiB", atStart, resident(server.pid)));
    const clients = await signedIn(server, kReaders);
    const browser = await launch();
    try {
        await measureFirstPaint(browser, server, clients);
        await measureTree(browser, server, clients[8]);
        await measureScroll(browser, server, clients[9]);
        await measureKeys(browser, server, clients[10]);
        await measureServer(server, clients);
        await measureSaves(admin);
        await measureUse(browser, server, clients[11]);
    } finally {
        await browser.close();
        [admin, ...clients].forEach(client => client.close());
        await server.stop();
    }
}

async function measureMillion() {
    const env = makeDirectory("million.db", 1000000, 10);
    const begin = now();
    const server = await serve(env);
    const clients = await signedIn(server, 10);
    await clients[0].read("/users");
    const start = (now() - begin) / 1000 - 1.1;
    const searches = await asked(server, clients, 200, search);
    report("1,000,000 users: start to the first list; resident; search p50 / p99", "30 s; 900 MiB; 100 ms",
        `${digits(start)} s; ${digits(resident(server.pid))} MiB; ${listed("ms", median(searches.times), part(searches.times, 0.99))}`);
    clients.forEach(client => client.close());
    await server.stop();
}

try {
    measureWeight();
    await measureHundredThousand();
    if (!options["no-million"]) {
        await measureMillion();
    }
    const width = column => Math.max(...lines.map(line => line[column].length), 8);
    const drawn = line => `| ${line.map((text, column) => text.padEnd(width(column))).join(" | ")} |`;
    console.log(drawn(["what", "goal", "measured"]));
    console.log(`|${[0, 1, 2].map(column => "-".repeat(width(column) + 2)).join("|")}|`);
    lines.forEach(line => console.log(drawn(line)));
    console.log(`\n${cpus().length} processors, load ${loadavg().map(digits).join(" ")}`);
} finally {
    rmSync(folder, { recursive: true, force: true });
}
