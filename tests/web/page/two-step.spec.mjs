import assert from "node:assert/strict";
import { createHmac } from "node:crypto";
import { test } from "node:test";
import { checkAccess, openPage, password, settled, useServer } from "./support.mjs";

const shared = useServer([]);

/** The one-time code of a step of 30 seconds, which is this one or later ones (RFC 6238). */
function codeOf(secret, later = 0) {
    const bits = [...secret].map(letter => "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567".indexOf(letter).toString(2).padStart(5, "0")).join("");
    const key = Buffer.from(bits.match(/.{8}/g).map(byte => parseInt(byte, 2)));
    const step = Buffer.alloc(8);
    step.writeBigUInt64BE(BigInt(Math.floor(Date.now() / 30000) + later));
    const digest = createHmac("sha1", key).update(step).digest();
    const offset = digest[19] & 15;
    return String((digest.readUInt32BE(offset) & 0x7fffffff) % 1000000).padStart(6, "0");
}

test("one-time codes are set up, asked for, replaced by a recovery code and removed", async () => {
    const first = await openPage(shared);
    await first.page.locator("details.user > summary").click();
    await first.page.getByRole("button", { name: "Two-step sign-in…" }).click();
    const dialog = first.page.getByRole("dialog", { name: "Two-step sign-in" });
    await dialog.getByRole("button", { name: "Set up one-time codes" }).click();
    const secret = await dialog.locator(".secret").textContent();
    assert.match(await dialog.getByRole("link").getAttribute("href"), new RegExp(`^otpauth://totp/.*secret=${secret}`));
    await checkAccess(first.page);
    assert.equal(await first.page.evaluate(() => document.activeElement.id), "totp-code");
    await dialog.getByLabel("One-time code").fill("x");
    await dialog.getByRole("button", { name: "Confirm" }).click();
    await dialog.getByText("the code is wrong").waitFor();
    await dialog.getByLabel("One-time code").fill(codeOf(secret));
    await dialog.getByRole("button", { name: "Confirm" }).click();
    await dialog.getByText("Keep these recovery codes").waitFor();
    const recovery = (await dialog.textContent()).match(/[a-z2-7]{4}(-[a-z2-7]{4}){3}/)[0];
    await checkAccess(first.page);
    await dialog.getByRole("button", { name: "I have kept them" }).click();
    await first.finish();

    const second = await openPage(shared, { signedIn: false });
    const { page } = second;
    await page.getByLabel("Login name").fill("Admin");
    await page.getByLabel("Password").fill(password);
    await page.keyboard.press("Enter");
    await page.getByLabel("One-time code").waitFor();
    await checkAccess(page);
    await page.keyboard.type("000 000");
    await page.keyboard.press("Enter");
    await page.getByRole("alert").getByText("the code is wrong, or was used before").waitFor();
    await page.getByLabel("One-time code").fill(codeOf(secret, 1));
    await page.keyboard.press("Enter");
    await page.getByRole("navigation", { name: "Areas" }).waitFor();
    await page.locator("details.user > summary").click();
    await page.getByRole("button", { name: "Sign out" }).click();

    await page.getByLabel("Login name").fill("Admin");
    await page.getByLabel("Password").fill(password);
    await page.keyboard.press("Enter");
    await page.getByLabel("One-time code").fill(recovery.toUpperCase());
    await page.keyboard.press("Enter");
    await page.locator("details.user > summary").click();
    await page.getByRole("button", { name: "Two-step sign-in…" }).click();
    await page.getByText("Recovery codes left: 9.").waitFor();
    await page.getByRole("button", { name: "Remove one-time codes" }).click();
    await page.getByRole("button", { name: "Set up one-time codes" }).waitFor();
    assert.deepEqual(
        shared.server.json("console", "list").map(row => [row.login, row.totp]),
        [["Admin", false]],
    );
    await second.finish();
});

test("one-time codes are offered to who signs in without them, until they are set up or declined", async () => {
    const { page, finish } = await openPage(shared);
    const offer = page.getByRole("complementary", { name: "Two-step sign-in" });
    await offer.waitFor();
    await checkAccess(page);
    await offer.getByRole("button", { name: "Set up two-step sign-in" }).click();
    const dialog = page.getByRole("dialog", { name: "Two-step sign-in" });
    await dialog.getByRole("button", { name: "Set up one-time codes" }).click();
    const secret = await dialog.locator(".secret").textContent();
    await dialog.getByLabel("One-time code").fill(codeOf(secret));
    await dialog.getByRole("button", { name: "Confirm" }).click();
    await dialog.getByRole("button", { name: "I have kept them" }).click();
    await offer.waitFor({ state: "detached" });
    shared.server.qvadmin("console", "totp", "remove", "Admin");
    await finish();

    const second = await openPage(shared);
    const again = second.page.getByRole("complementary", { name: "Two-step sign-in" });
    await again.getByRole("button", { name: "Not now" }).click();
    await again.waitFor({ state: "detached" });
    await second.page.reload();
    await settled(second.page);
    assert.equal(await again.count(), 0);
    const state = await second.page.context().storageState();
    assert.deepEqual(state.origins[0].localStorage, [{ name: "two-step", value: "1" }]);
    await second.finish();
});
