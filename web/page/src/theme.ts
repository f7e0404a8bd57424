// The colours that somebody has chosen; the system's otherwise.

const { dataset } = document.documentElement;
const kept = localStorage.getItem("theme");
if (kept) {
    dataset["theme"] = kept;
}

export const isDark = () => (dataset["theme"] ?? (matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light")) === "dark";
export function switchTheme(): void {
    const theme = isDark() ? "light" : "dark";
    dataset["theme"] = theme;
    localStorage.setItem("theme", theme);
}
