// Where somebody is stands in the URL.
import { useEffect, useRef, useState } from "preact/hooks";

export interface Where {
    path: string;
    query: Record<string, string>;
}

const here = (): Where => ({
    path: location.pathname,
    query: Object.fromEntries(new URLSearchParams(location.search)),
});

const listeners = new Set<() => void>();
/** Asked before another place is shown; false keeps the present one. */
const guards = new Set<() => Promise<boolean>>();

window.addEventListener("popstate", () => listeners.forEach(listener => listener()));

// Of the window that is closed the browser asks by itself.
window.addEventListener("beforeunload", event => {
    if (guards.size > 0) {
        event.preventDefault();
    }
});

/** Has somebody asked before what is being entered gets lost. @return ends that. */
export function addGuard(guard: () => Promise<boolean>): () => void {
    guards.add(guard);
    return () => void guards.delete(guard);
}

/**
 * Shows a place. Values that are empty or undefined are left out.
 * @param how  "keep" where what is being entered stays in sight; "replace" puts it in place of the present one.
 */
export async function go(
    path: string,
    query: Record<string, string | undefined> = {},
    how: "ask" | "keep" | "replace" = "ask",
): Promise<boolean> {
    for (const guard of how === "ask" ? guards : []) {
        if (!(await guard())) {
            return false;
        }
    }
    const kept = Object.entries(query).filter((entry): entry is [string, string] => !!entry[1]);
    const text = new URLSearchParams(kept).toString().replaceAll("%3A", ":");
    history[how === "replace" ? "replaceState" : "pushState"](null, "", path + (text ? `?${text}` : ""));
    listeners.forEach(listener => listener());
    return true;
}

export function useWhere(): Where {
    const [where, setWhere] = useState(here);
    useEffect(() => {
        const listen = () => setWhere(here());
        listeners.add(listen);
        return () => void listeners.delete(listen);
    }, []);
    return where;
}

/** Tells lists and trees that something was changed. @param isElsewhere  by somebody else, or in another window. */
const changes = new Set<(isElsewhere: boolean) => void>();
export const noteChange = (isElsewhere = false) => changes.forEach(listener => listener(isElsewhere));
/** Counts changes. @param takes  says whether one counts; all do where it is not given. */
export function useChanges(takes: (isElsewhere: boolean) => boolean = () => true): number {
    const [count, setCount] = useState(0);
    const latest = useRef(takes);
    latest.current = takes;
    useEffect(() => {
        const listen = (isElsewhere: boolean) => latest.current(isElsewhere) && setCount(before => before + 1);
        changes.add(listen);
        return () => void changes.delete(listen);
    }, []);
    return count;
}
