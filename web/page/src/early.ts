// Asks for what is shown first while the page itself is still on its way; the server sends this to who has a session.
import { language } from "./language";
import "./theme";
import { listOf, peoplePath, placesPath, queryOf } from "./query";

export interface Early {
    response: Response;
    text: string;
}

declare global {
    interface Window {
        /** Answers by their paths, each for the first one who wants it; none where nobody has a session. */
        early?: Map<string, Promise<Early>>;
    }
}

async function ask(path: string): Promise<Early> {
    const response = await fetch(`/api/v1${path}`, { credentials: "same-origin", headers: { "Accept-Language": language } });
    return { response, text: await response.text() };
}

const { pathname, search } = location;
const list = listOf(Object.fromEntries(new URLSearchParams(search)));
const isDirectory = pathname === "/" || pathname === "/directory";
const paths = ["/session", "/commands", ...(isDirectory ? [peoplePath(queryOf(list)), placesPath("", 0)] : [])];
window.early = new Map(paths.map(path => [path, ask(path)]));
window.early.forEach(answer => answer.catch(() => {})); // who wants it is told
