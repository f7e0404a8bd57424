import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const hostile = "<b>bold</b>\nsecond line";
const notices = Array.from({ length: 120 }, (_, i) => ({
    noun: "notice",
    id: String(i + 1),
    creator: i % 2 ? "amy" : "rory",
    subject: i === 41 ? "Fire drill" : `Notice ${i + 1}`,
    created: `2026-01-01 00:${String(Math.floor(i / 60)).padStart(2, "0")}:${String(i % 60).padStart(2, "0")}`,
    content: hostile,
}));
const shared = useServer([], {
    lines: [
        ...notices,
        { noun: "notice_file", notice: "42", file: "plan.pdf" },
        { noun: "notice_reply", notice: "42", creator: "amy", created: "2026-01-02 00:00:00", content: "I know." },
        { noun: "notice_reader", notice: "42", item: "0_1", name: "Rory", read: "2026-01-02 00:00:00", flag: 1 },
    ],
});
const count = () => shared.server.json("board", "list").length;

test("notices are found, read with what belongs to them, and deleted one or several at once", async () => {
    const { page, finish } = await openPage(shared, { path: "/board" });
    await page.getByText("Notices: 120").waitFor();
    const grid = page.getByRole("grid", { name: "Board" });
    assert.ok((await grid.getByRole("row").count()) < 60, "only rows in sight are drawn");
    await page.getByLabel("Find a notice").fill("fire");
    await page.getByText("Notices: 1", { exact: true }).waitFor();
    await grid.getByText("Fire drill").click();
    const notice = page.getByRole("region", { name: "Notice", exact: true });
    await notice.getByRole("heading", { name: "Fire drill" }).waitFor();
    assert.equal(await notice.locator(".letter").textContent(), hostile);
    for (const text of ["plan.pdf", "I know.", "Rory"]) {
        await notice.getByRole("cell", { name: text }).waitFor();
    }
    await checkAccess(page);
    await notice.getByRole("button", { name: "Delete…" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByText("1 attachment, 1 reply, 1 reader").waitFor();
    await dialog.getByRole("button", { name: "Go on" }).click();
    await until(() => count() === 119);
    await page.getByRole("button", { name: "Undo" }).click();
    await until(() => count() === 120);

    await page.getByLabel("Find a notice").fill("");
    await page.getByText("Notices: 120").waitFor();
    await grid.focus();
    await page.keyboard.press("Home");
    for (const key of [" ", "ArrowDown", " "]) {
        await page.keyboard.press(key);
    }
    await page.getByRole("button", { name: "Delete 2…" }).click();
    await dialog.getByText("Notice 119").waitFor();
    await dialog.getByText("Notice 120").waitFor();
    await dialog.getByRole("button", { name: "Go on" }).click();
    await page.getByText("Notices: 118").waitFor();
    await grid.focus();
    await page.keyboard.press("End");
    await page.keyboard.press("Enter");
    await notice.getByRole("heading", { name: "Notice 1", exact: true }).waitFor();
    assert.match(page.url(), /notice=1$/);
    await finish();
});
