// Menus close as people expect it of menus, and keys lead from panel to panel.

const openMenus = () => document.querySelectorAll<HTMLDetailsElement>("details.menu[open]");
/** What is in the tab order of each panel, in the order of panels. */
const panels = "nav.areas a[aria-current], [role=tree], [role=grid], [role=tabpanel], .page > .tabs [aria-current]";

function closeOthers(event: Event): void {
    openMenus().forEach(menu => {
        if (!menu.contains(event.target as Node)) {
            menu.open = false;
        }
    });
}

function onKey(event: KeyboardEvent): void {
    const menu = openMenus()[0];
    if (event.key === "Escape" && menu) {
        event.preventDefault();
        event.stopPropagation();
        menu.open = false;
        menu.querySelector("summary")?.focus();
    } else if (event.key === "F6" && !document.querySelector("dialog[open]")) {
        event.preventDefault();
        const all = [...document.querySelectorAll<HTMLElement>(panels)];
        const around = (element: Element | null) => element?.closest(".panel, nav, .page") ?? null;
        const present = all.findIndex(panel => around(panel) === around(document.activeElement));
        const step = event.shiftKey ? (present < 0 ? 0 : -1) : 1;
        all[(present + step + all.length) % all.length]?.focus();
    }
}

/** To be called once. */
export function beginMenus(): void {
    document.addEventListener("pointerdown", closeOthers);
    document.addEventListener("focusin", closeOthers);
    document.addEventListener("keydown", onKey, { capture: true });
}
