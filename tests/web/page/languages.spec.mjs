import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { checkAccess, openPage, password, until, useServer } from "./support.mjs";

const shared = useServer(["view create Company", "user create amy --name 'Amy Pond'"]);

async function signIn(page, labels) {
    await page.getByLabel(labels.login).fill("Admin");
    await page.getByLabel(labels.password).fill(password);
    await page.keyboard.press("Enter");
}

for (const { locale, lang, login, word, directory } of [
    { locale: "de-AT", lang: "de", login: "Anmeldename", word: "Kennwort", directory: "Verzeichnis" },
    { locale: "zh-CN", lang: "zh-CN", login: "登录名", word: "密码", directory: "目录" },
]) {
    test(`${lang}: the page speaks the browser's language, fits, and has no findings`, async () => {
        const { page, finish } = await openPage(shared, { path: "/directory?user=1", signedIn: false, locale });
        await signIn(page, { login, password: word });
        await page.getByRole("heading", { name: "Amy Pond" }).waitFor();
        assert.equal(await page.locator("html").getAttribute("lang"), lang);
        await page.getByRole("link", { name: directory }).waitFor();
        await checkAccess(page);
        // No text of a label runs out of its box.
        const tooWide = await page
            .locator(".areas a, button, label, .tabs > *")
            .evaluateAll(all => all.filter(one => one.scrollWidth > one.clientWidth + 1 && one.clientWidth > 0).map(one => one.textContent));
        assert.deepEqual(tooWide, []);
        await finish();
    });
}

test("fields and columns are called as in the rest of the page, and commands as the page offers them", async () => {
    const { page, finish } = await openPage(shared, { path: "/directory?user=1", signedIn: false, locale: "de-DE" });
    await signIn(page, { login: "Anmeldename", password: "Kennwort" });
    await page.getByLabel("Geburtstag").waitFor();
    assert.equal(await page.getByLabel("Geschlecht").locator("option").first().textContent(), "Keine Angabe");
    await page.goto(`${shared.server.url}/audit`);
    await page.getByRole("columnheader", { name: "Grund" }).waitFor();
    await page.goto(`${shared.server.url}/directory?user=99`);
    await page.getByText("es gibt keinen Benutzer mit der Id 99; “Benutzer: Auflisten” zeigt alle").waitFor();
    await finish();
});

test("what the server says is in the language of the page, whatever the browser's is", async () => {
    const { page, finish } = await openPage(shared, { path: "/more?noun=user" });
    await page.locator("details.user > summary").click();
    await page.getByLabel("Language").selectOption("de");
    await page.getByRole("button", { name: "Anlegen", exact: true }).click();
    const form = page.getByRole("dialog");
    await form.getByText("einen Benutzer anlegen").waitFor();
    await form.getByLabel("Abteilung als Text").waitFor();
    await form.getByText("Anmeldename", { exact: false }).first().waitFor();
    await page.keyboard.press("Escape");
    await page.goto(`${shared.server.url}/directory`);
    await page.getByLabel("amy auswählen").check();
    await page.getByRole("button", { name: "Sperren", exact: true }).click();
    await page.getByText("gesperrt: amy").waitFor();
    await page.getByRole("button", { name: "Löschen…" }).click();
    await page.getByRole("dialog", { name: "1 Benutzer löschen?" }).getByRole("button", { name: "Abbrechen" }).click();
    await finish();
});

test("names of areas are broken where a hyphen goes, and that of the present one is in sight", async () => {
    const labels = { "en-GB": ["Login name", "Password"], "de-DE": ["Anmeldename", "Kennwort"], "zh-CN": ["登录名", "密码"] };
    for (const [locale, [login, word]] of Object.entries(labels)) {
        const { page, finish } = await openPage(shared, { path: "/settings", signedIn: false, locale, width: 390, height: 800 });
        await signIn(page, { login, password: word });
        const present = page.locator(".areas a[aria-current]");
        await present.waitFor();
        await until(async () => /^\p{Letter}+ – Quorvel$/u.test(await page.title()), "the title has no hyphens");
        await until(async () => {
            const { x, width } = await present.boundingBox();
            return x >= 0 && x + width <= 390;
        }, "the present area is in sight");
        // The name of the present one is bold, and any of them can be that.
        await page.locator(".areas a").evaluateAll(all => all.forEach(one => one.setAttribute("aria-current", "page")));
        const broken = () =>
            page.locator(".areas a span").evaluateAll(all =>
                all
                    .filter(one => {
                        const range = document.createRange();
                        range.selectNodeContents(one);
                        const lines = new Set([...range.getClientRects()].map(box => Math.round(box.top))).size;
                        return lines > 1 + (one.textContent.match(/[\u00ad -]/g)?.length ?? 0);
                    })
                    .map(one => one.textContent),
            );
        assert.deepEqual(await broken(), []);
        const heights = await page.locator(".areas a span").evaluateAll(all => new Set(all.map(one => one.offsetHeight)).size);
        assert.equal(heights, 1, "in the bar each is on one line");
        await page.setViewportSize({ width: 1280, height: 400 });
        assert.deepEqual(await broken(), []);
        await finish();
    }
});

test("a language that is chosen stays", async () => {
    const { page, finish } = await openPage(shared);
    await page.locator("details.user > summary").click();
    await page.getByLabel("Language").selectOption("de");
    await page.getByRole("link", { name: "Verzeichnis" }).waitFor();
    await page.reload();
    await page.getByRole("link", { name: "Verzeichnis" }).waitFor();
    await finish();
});

test("every language has the placeholders of the English texts", () => {
    const textsOf = name =>
        new Map(
            [...readFileSync(new URL(`../../../web/page/src/${name}.ts`, import.meta.url), "utf8").matchAll(/^ {4}"([\w.]+)":\s+"(.*)",$/gm)].map(
                ([, key, text]) => [key, (text.match(/\{\w+\}/g) ?? []).sort().join()],
            ),
        );
    const english = textsOf("en");
    assert.ok(english.size > 100);
    for (const name of ["de", "zh-CN"]) {
        assert.deepEqual(Object.fromEntries(textsOf(name)), Object.fromEntries(english), name);
    }
});
