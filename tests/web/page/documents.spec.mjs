import assert from "node:assert/strict";
import { test } from "node:test";
import { checkAccess, openPage, until, useServer } from "./support.mjs";

const shared = useServer([
    "docroot create Company --path /srv/company",
    "docroot create Archive --path /srv/archive",
    "folder create /Company/Plans",
    "folder create /Company/Plans/2026",
    "folder create '/Company/Plans/2026/<img src=x onerror=alert(1)>'",
    "folder create /Archive/Lost",
    "folder unlink /Archive/Lost --yes",
    "role create Editors",
    "objright grant role:Editors 105 1 doc read 4",
    "doclog add 105 1 opened 'by amy'",
]);
const shown = path => shared.server.json("folder", "show", path);
const active = async page => {
    const id = await page.getByRole("tree").getAttribute("aria-activedescendant");
    return (await page.locator(`#${id} .name`).textContent()).trim();
};

test("folders are found by keys, made, renamed, shown in two places, taken out and deleted, and all is undone", async () => {
    const { page, finish } = await openPage(shared, { path: "/documents" });
    const tree = page.getByRole("tree", { name: "Roots and folders" });
    await tree.getByText("Company").waitFor();
    await checkAccess(page);
    await tree.focus();
    await page.keyboard.type("co");
    await until(async () => (await active(page)) === "Company");
    await page.keyboard.press("ArrowRight");
    await tree.getByText("Plans").waitFor();
    await page.keyboard.press("ArrowRight");
    await page.keyboard.press("Enter");
    const place = page.getByRole("region", { name: "Root or folder" });
    await place.getByRole("heading", { name: "Plans" }).waitFor();
    await place.getByRole("cell", { name: "2026" }).waitFor();

    await place.getByRole("button", { name: "New folder…" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByLabel("Name").fill("A/B");
    await dialog.getByRole("button", { name: "Create" }).click();
    await place.getByRole("cell", { name: "A/B" }).waitFor();
    await tree.getByText("A/B").click();
    await place.getByRole("heading", { name: "A/B" }).waitFor();

    await place.getByRole("button", { name: "Also show in…" }).click();
    await dialog.getByLabel("Root or folder").fill("/Archive");
    await dialog.getByRole("button", { name: "OK" }).click();
    await until(() => shown("/Archive/A\\/B").parents === "/Archive, /Company/Plans");
    await place.getByRole("button", { name: "Take out of here" }).click();
    await until(() => shown("/Archive/A\\/B").parents === "/Archive");
    await page.getByRole("button", { name: "Undo" }).last().click();
    await until(() => shown("/Archive/A\\/B").parents === "/Archive, /Company/Plans");

    await tree.getByText("Archive").dblclick();
    await tree.getByText("A/B").first().click();
    await page.keyboard.press("F2");
    await dialog.getByLabel("Name").fill("Both");
    await dialog.getByRole("button", { name: "Rename" }).click();
    await until(() => shown("/Archive/Both").name === "Both");

    await place.getByRole("heading", { name: "Both" }).waitFor();
    await place.getByRole("button", { name: "Delete…" }).click();
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Go on" }).click();
    await until(async () => (await tree.getByText("Both").count()) === 0);
    await page.getByRole("button", { name: "Undo" }).last().click();
    await tree.getByText("Both").first().waitFor();
    await finish();
});

test("what a link leads to is shown in the tree, with its contents, properties, rights and log", async () => {
    const id = shown("/Company/Plans/2026").id;
    const { page, finish } = await openPage(shared, { path: `/documents?at=folder:${id}` });
    const tree = page.getByRole("tree", { name: "Roots and folders" });
    await tree.getByRole("treeitem", { selected: true }).getByText("2026").waitFor();
    const place = page.getByRole("region", { name: "Root or folder" });
    await place.getByRole("cell", { name: "<img src=x onerror=alert(1)>" }).waitFor();
    await tree.getByText("Plans", { exact: true }).click();
    await place.getByRole("heading", { name: "Plans" }).waitFor();
    await place.getByRole("button", { name: "Properties" }).click();
    await place.getByText("Other objects").waitFor();
    await place.getByRole("button", { name: "Log" }).click();
    await place.getByRole("cell", { name: "by amy" }).waitFor();
    await place.getByRole("button", { name: "Rights" }).click();
    await place.getByRole("cell", { name: "Editors" }).waitFor();
    await checkAccess(page);
    await place.getByRole("row").filter({ hasText: "Editors" }).getByRole("button", { name: "Change…" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByLabel("Power *").fill("7");
    await dialog.getByRole("button", { name: "Run" }).click();
    await place.getByRole("cell", { name: "7", exact: true }).waitFor();
    await tree.getByText("In no document root").dblclick();
    await tree.getByText("Lost").click();
    await place.getByRole("heading", { name: "Lost" }).waitFor();
    await finish();
});

test("a root's properties are changed only as they were shown", async () => {
    const { page, finish } = await openPage(shared, { path: "/documents" });
    await page.getByRole("tree").getByText("Company").click();
    const place = page.getByRole("region", { name: "Root or folder" });
    await place.getByRole("button", { name: "Change…" }).click();
    const dialog = page.getByRole("dialog");
    assert.equal(await dialog.getByLabel("Path").inputValue(), "/srv/company");
    shared.server.qvadmin("docroot", "set", "Company", "--description", "of the command line");
    await dialog.getByLabel("Display name").fill("The company");
    await dialog.getByRole("button", { name: "Save" }).click();
    await dialog.getByText("somebody else has changed this").waitFor();
    assert.equal(shared.server.json("docroot", "show", "Company").display_name, "");
    await dialog.getByRole("button", { name: "Cancel" }).click();
    await page.reload();
    await place.getByRole("button", { name: "Change…" }).click();
    await dialog.getByLabel("Display name").fill("The company");
    await dialog.getByRole("button", { name: "Save" }).click();
    await until(() => shared.server.json("docroot", "show", "Company").display_name === "The company");
    assert.equal(shared.server.json("docroot", "show", "Company").description, "of the command line");
    await finish();
});

test("folders are dragged, and cut and put by keys, after a question; with Ctrl they stay where they are too", async () => {
    shared.server.qvadmin("folder", "create", "/Company/Letters");
    const { page, finish } = await openPage(shared, { path: "/documents" });
    const tree = page.getByRole("tree", { name: "Roots and folders" });
    await tree.getByText("Company").dblclick();
    await tree.getByText("Letters").dragTo(tree.getByText("Archive"));
    const dialog = page.getByRole("dialog", { name: "Move Letters to Archive?" });
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Cancel" }).click();
    assert.equal(shown("/Company/Letters").parents, "/Company");
    await tree.getByText("Letters").dragTo(tree.getByText("Archive"));
    await dialog.getByRole("button", { name: "Move" }).click();
    await until(() => shown("/Archive/Letters").parents === "/Archive");
    await page.getByRole("button", { name: "Undo", exact: true }).last().click();
    await until(() => shown("/Company/Letters").parents === "/Company");

    await tree.getByText("Letters").waitFor();
    await tree.focus();
    await page.keyboard.press("Home");
    await page.keyboard.type("lett");
    await until(async () => (await active(page)) === "Letters");
    await page.keyboard.press("Control+x");
    await page.getByText("choose a place in the tree").waitFor();
    await page.keyboard.press("Home");
    await page.keyboard.type("arch");
    await until(async () => (await active(page)) === "Archive");
    await page.keyboard.press("Control+v");
    await dialog.getByRole("button", { name: "Move" }).click();
    await until(() => shown("/Archive/Letters").parents === "/Archive");

    await tree.getByText("Archive").dblclick();
    await tree.getByText("Letters").waitFor();
    await page.keyboard.down("Control");
    await tree.getByText("Letters").dragTo(tree.getByText("Company"));
    await page.keyboard.up("Control");
    await page.getByRole("dialog", { name: "Show Letters in Company as well?" }).getByRole("button", { name: "OK" }).click();
    await until(() => shown("/Archive/Letters").parents === "/Archive, /Company");
    await finish();
});
