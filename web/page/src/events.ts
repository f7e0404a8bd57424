// What the server says by itself. One window of a browser listens, and tells the others.
import type { Answer } from "./api";
import { noteChange } from "./place";

type News = { what: "hello" | "changed" | "progress"; entry?: number };

/** After which time a stream that the server has refused is asked for again. */
const kPause = 10000;
const channel = new BroadcastChannel("events");
/** Entries of the record that this window has made. */
const own = new Set<number>();
let known: number | undefined;
const watchers = new Set<() => void>();

/** Changes that this window has asked for, and whose answers are on their way. */
let asked: Promise<unknown> = Promise.resolve();

/** Notes that a change is this window's, which shows it by itself; the server may tell of it before it answers. */
export async function asOwn(answer: Promise<Answer>): Promise<Answer> {
    asked = Promise.allSettled([asked, answer.then(({ entry }) => entry && own.add(entry))]);
    return answer;
}
/** Has a function called when an import is further. @return ends that. */
export function watchProgress(watcher: () => void): () => void {
    watchers.add(watcher);
    return () => void watchers.delete(watcher);
}

function areOwn(first: number, last: number): boolean {
    for (let entry = last; entry >= first; --entry) {
        if (!own.has(entry)) {
            return false;
        }
    }
    return last >= first;
}

async function take(news: News): Promise<void> {
    if (news.what === "progress") {
        watchers.forEach(watcher => watcher());
        return;
    }
    await asked;
    const entry = news.entry ?? 0;
    const before = known ?? entry - 1;
    // What a stream that was refused for a while has missed comes with its next greeting.
    const isNews = news.what === "changed" || (known !== undefined && entry > known);
    known = entry;
    if (isNews && !areOwn(before + 1, entry)) {
        noteChange(true);
    }
}

function listen(): void {
    const source = new EventSource("/api/v1/events");
    for (const what of ["hello", "changed", "progress"] as const) {
        source.addEventListener(what, event => {
            const news: News = { ...JSON.parse(event.data), what };
            void take(news);
            channel.postMessage(news);
        });
    }
    source.addEventListener("error", () => {
        if (source.readyState === EventSource.CLOSED) {
            setTimeout(listen, kPause);
        }
    });
}

/** To be called once. */
export function beginEvents(): void {
    channel.addEventListener("message", event => void take(event.data as News));
    // A browser has few connections to a server: the window that has the lock listens, until it is closed.
    void navigator.locks.request("events", () => new Promise<never>(listen));
}
