// What the tests of the page share: a directory, the server on it, and a browser that notes every error.
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before } from "node:test";

const { QVADMIN, QV_PAGE_MODULES, QV_CHROMIUM = "/usr/bin/chromium-headless-shell" } = process.env;
const require = createRequire(join(QV_PAGE_MODULES, "package.json"));
const { chromium } = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export const password = "correct horse battery";
/** How many milliseconds is waited for what must come, on a slow machine beside other tests too. */
const kPatience = 30000;

/** Runs `qvadmin serve` in an environment, and waits until it listens. */
export async function serve(env, hasPassword = true) {
    const child = spawn(QVADMIN, ["serve", "--listen", "127.0.0.1:0"], { env, stdio: ["ignore", "ignore", "pipe"] });
    let said = "";
    child.stderr.on("data", text => (said += text));
    const ended = new Promise(resolve => child.on("exit", resolve));
    for (let i = 0; !/console is at/.test(said) || (!hasPassword && !/setup#/.test(said)); ++i) {
        assert.ok(i < kPatience / 50, `the server says ${said}`);
        await new Promise(resolve => setTimeout(resolve, 50));
    }
    return {
        url: said.match(/http:\/\/[0-9.:]+/)[0],
        token: said.match(/setup#([0-9a-f]+)/)?.[1],
        pid: child.pid,
        async stop() {
            child.kill("SIGTERM");
            assert.equal(await ended, 0, said);
        },
    };
}

export const launch = () =>
    chromium.launch({
        executablePath: QV_CHROMIUM,
        args: [
            "--headless",
            "--no-sandbox",
            "--disable-gpu",
            "--disable-quic",
            "--no-first-run",
            "--disable-background-networking",
            "--disable-component-update",
            "--disable-sync",
        ],
    });

/**
 * A directory with these commands run on it, people of a CSV text, lines of `qvadmin import`, and a server. Admin has a
 * password unless not wanted.
 */
export async function startServer(commands = [], { withPassword = true, people = "", lines = [] } = {}) {
    const folder = mkdtempSync(join(tmpdir(), "page-"));
    const env = { ...process.env, QVADMIN_DB: `sqlite:${folder}/directory.db` };
    const qvadmin = (...words) => execFileSync(QVADMIN, words, { env, cwd: folder, encoding: "utf8", stdio: ["ignore", "pipe", "pipe"] });
    qvadmin("db", "init");
    if (people) {
        writeFileSync(join(folder, "people.csv"), people);
        qvadmin("user", "import", join(folder, "people.csv"), "--result", join(folder, "result.csv"));
    }
    if (lines.length > 0) {
        const all = [{ format: "qvadmin directory", version: 1 }, ...lines];
        writeFileSync(join(folder, "lines.jsonl"), all.map(line => JSON.stringify(line)).join("\n"));
        qvadmin("import", join(folder, "lines.jsonl"), "--result", join(folder, "lines.csv"));
    }
    const batch = [...commands];
    writeFileSync(join(folder, "password"), `${password}\n`, { mode: 0o600 });
    if (withPassword) {
        batch.push("user create Admin --super", "user password set Admin --password-file password");
    }
    writeFileSync(join(folder, "batch"), batch.join("\n"));
    qvadmin("batch", join(folder, "batch"), "--stop-on-error");
    const served = await serve(env, withPassword);
    return {
        ...served,
        qvadmin,
        countUsers: (...options) => Number(qvadmin("user", "count", ...options, "-o", "json")),
        json: (...words) => JSON.parse(qvadmin(...words, "-o", "json")),
        async stop() {
            await served.stop();
            rmSync(folder, { recursive: true });
        },
    };
}

/** One server and one browser for all tests of a file. */
export function useServer(commands, options) {
    const shared = {};
    before(async () => {
        shared.server = await startServer(commands, options);
        shared.browser = await launch();
    });
    after(async () => {
        await shared.browser?.close();
        await shared.server?.stop();
    });
    return shared;
}

/** The requests that pages wait for, but for the one by which they hear of changes: it waits as long as there are none. */
const pending = new WeakMap();

/** Waits until a page has had all of its answers for a moment. */
export async function settled(page) {
    const asked = pending.get(page);
    let quiet = 0;
    for (let i = 0; quiet < 5; ++i) {
        assert.ok(i < kPatience / 20, `without an answer: ${[...asked].map(request => request.url())}`);
        await page.waitForTimeout(20);
        quiet = asked.size === 0 ? quiet + 1 : 0;
    }
}

/** A page in a browser of its own. What goes wrong in it fails the test that calls `finish`. */
export async function openPage(shared, { path = "/", width = 1440, height = 900, signedIn = true, login = "Admin", ...options } = {}) {
    const context = await shared.browser.newContext({ viewport: { width, height }, locale: "en-GB", ...options });
    const page = await context.newPage();
    const errors = [];
    page.on("pageerror", error => errors.push(String(error)));
    page.on("console", message => {
        // A refused request is told there too.
        if (message.type() === "error" && !/Failed to load resource/.test(message.text())) {
            errors.push(message.text());
        }
    });
    page.on("request", request => {
        if (!request.url().startsWith(shared.server.url) && !request.url().startsWith("data:")) {
            errors.push(`asks for ${request.url()}`);
        }
    });
    const asked = new Set();
    pending.set(page, asked);
    let leaving;
    page.on("request", request => {
        if (request.isNavigationRequest() && request.frame() === page.mainFrame()) {
            leaving = request;
        }
        request.url().endsWith("/api/v1/events") || asked.add(request);
    });
    page.on("requestfinished", request => asked.delete(request));
    page.on("requestfailed", request => {
        asked.delete(request);
        leaving = request === leaving ? undefined : leaving;
    });
    page.on("framenavigated", frame => {
        // A page sends requests until the next one replaces it, and the browser reports no end of those.
        if (leaving && frame === page.mainFrame()) {
            asked.clear();
            leaving = undefined;
        }
    });
    page.setDefaultTimeout(kPatience);
    await page.goto(shared.server.url + path);
    if (signedIn) {
        await page.getByLabel("Login name").fill(login);
        await page.getByLabel("Password").fill(password);
        await page.getByRole("button", { name: "Sign in" }).click();
        await page.getByRole("navigation", { name: "Areas" }).waitFor();
        // Until the table of commands is there, nothing is offered that may not be run.
        await settled(page);
    }
    return {
        page,
        async finish() {
            await page.waitForTimeout(50);
            assert.deepEqual(errors, []);
            await context.close();
        },
    };
}

/** Fails for what keeps people with disabilities from using what the page shows. */
export async function checkAccess(page) {
    const session = await page.context().newCDPSession(page);
    await session.send("Runtime.evaluate", { expression: `window.axe || (() => {${axe}})()` });
    const { result } = await session.send("Runtime.evaluate", {
        expression: `axe.run(document, { resultTypes: ["violations"] }).then(found => JSON.stringify(found.violations.map(
            one => one.id + ": " + one.nodes.map(node => node.html + " " + node.failureSummary).join("; "))))`,
        awaitPromise: true,
        returnByValue: true,
    });
    assert.deepEqual(JSON.parse(result.value), []);
}

/** Waits until something holds. */
export async function until(check, what) {
    for (const begin = Date.now(); ; ) {
        try {
            assert.ok(await check(), what);
            return;
        } catch (error) {
            if (Date.now() - begin > kPatience) {
                throw error;
            }
        }
        await new Promise(resolve => setTimeout(resolve, 50));
    }
}
