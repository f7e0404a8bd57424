// Keys that mean something wherever somebody is, and a list of all keys.
import { useEffect, useRef } from "preact/hooks";
import { Dialog, openDialog } from "./dialogs";
import type { Key } from "./en";
import { t } from "./texts";

const kOff = "keys";
/** Keys without Ctrl or Alt can be in the way of who speaks to the browser. */
export const areKeysOn = () => localStorage.getItem(kOff) !== "off";
export const switchKeys = (isOn: boolean) => localStorage.setItem(kOff, isOn ? "on" : "off");

/** Has a key without Ctrl or Alt act wherever nothing is entered and no dialog is open. */
export function useKey(key: string, act: () => void): void {
    const latest = useRef(act);
    latest.current = act;
    useEffect(() => {
        const onKey = (event: KeyboardEvent) => {
            const isTyping =
                (event.target as Element).closest("input:not([type=checkbox]), textarea, select, [role=menu]") !== null ||
                document.querySelector("dialog[open]") !== null;
            if (event.key === key && areKeysOn() && !isTyping && !event.ctrlKey && !event.metaKey && !event.altKey) {
                event.preventDefault();
                latest.current();
            }
        };
        document.addEventListener("keydown", onKey);
        return () => document.removeEventListener("keydown", onKey);
    }, []);
}

const keys: [string, Key][] = [
    ["/", "keys.search"],
    ["n", "people.new"],
    ["?", "keys.title"],
    ["F6, Shift+F6", "keys.panel"],
    ["Ctrl+S", "save"],
    ["Esc", "close"],
    ["↑ ↓ Home End PgUp PgDn", "keys.move"],
    ["Enter", "keys.open"],
    ["→ ←", "keys.branch"],
    ["A … Z", "keys.letters"],
    ["Space, Shift+↑ ↓, Ctrl+A", "keys.select"],
    ["Shift+F10", "keys.menu"],
    ["F2", "rename"],
    ["Del", "delete"],
    ["Ctrl+X, Ctrl+V", "keys.carry"],
];

export const openKeys = () =>
    openDialog(close => (
        <Dialog title={t("keys.title")} onClose={close}>
            <dl class="record">
                {keys.map(([key, text]) => (
                    <div key={key}>
                        <dt>
                            <kbd dir="ltr">{key}</kbd>
                        </dt>
                        <dd>{t(text)}</dd>
                    </div>
                ))}
            </dl>
            <div class="buttons">
                <button onClick={close}>{t("close")}</button>
            </div>
        </Dialog>
    ));
