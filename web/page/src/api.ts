// Requests to the server.
import type { Early } from "./early";
import { watchProgress } from "./events";
import { language } from "./language";
import { noteSilence } from "./offline";
import { peoplePath, placesPath } from "./query";
import { setNames } from "./texts";

export type Value = string | number | boolean | null;
export type Row = Record<string, Value>;
/** All of a list that the server keeps, but for some ids. */
export interface Chosen {
    result: string;
    except: number[];
}
export type Values = Record<string, Value | string[] | Chosen>;

export interface Plan {
    lines: string[];
    further_lines: number;
    question: string;
    removed: number;
    digest: string;
}

export interface Outcome {
    type: string;
    id: number;
    name: string;
    outcome: string;
    message: string;
}

export interface Answer {
    columns?: string[];
    rows?: Row[];
    cut?: boolean;
    record?: Row;
    parts?: Record<string, Row[]>;
    version?: string;
    value?: Value;
    verdict?: boolean;
    finding?: { sentence: string; notes: string[]; rows: Row[] };
    outcomes?: Outcome[];
    notes?: string[];
    changed?: boolean;
    entry?: number | null;
    password?: string;
    passwords?: { login: string; password: string }[];
    error?: string;
    plan?: Plan;
}

export interface Parameter {
    name: string;
    kind: string;
    help: string;
    positional: boolean;
    required: boolean;
    list: boolean;
    choices?: string[];
}

export interface Command {
    path: string[];
    summary: string;
    effect: "read" | "create" | "change" | "remove";
    asks: boolean;
    long_running: boolean;
    parameters: Parameter[];
    columns: { name: string; kind: string }[];
}

export interface Session {
    id: number;
    login: string;
    name: string;
    csrf: string;
    engine: string;
    level: "read-only" | "help-desk" | "full";
    /** Whether one-time codes are asked for, and whether nothing can be done before they are set up. */
    totp: boolean;
    totp_required: boolean;
    recovery_codes: number;
    /** Those that were made just now, which are shown once. */
    new_recovery_codes?: string[];
}

export interface Person extends Row {
    id: number;
    login: string;
}

export interface People {
    result: string;
    total: number;
    offset: number;
    as_of: string;
    path?: string;
    trail?: Step[];
    rows: Person[];
}

/** What names mean; `result` has those who are meant. */
export interface FoundNames {
    result: string;
    total: number;
    missing: string[];
    ambiguous: { name: string; people: Person[] }[];
}

export interface Step {
    key: string;
    name: string;
}

export interface Place extends Step {
    people: number;
    children: number;
    places: number;
}

export interface Places {
    total: number;
    offset: number;
    nowhere?: number;
    rows: Place[];
}

export class Problem extends Error {
    constructor(
        readonly status: number,
        readonly code: string,
        detail: string,
        readonly plan?: Plan,
        readonly current?: Row,
        readonly version?: string,
        readonly candidates: string[] = [],
    ) {
        super(detail);
    }
}

/** After which time without a key or click a page asks by itself, which does not make its session last longer. */
const kUnattended = 30000;
let touched = Date.now();
for (const kind of ["keydown", "pointerdown", "wheel"]) {
    addEventListener(kind, () => (touched = Date.now()), { capture: true, passive: true });
}

let csrf = "";
/** Has somebody sign in, or give the password again, over the page; resolves when that is done. */
let askPassword: (why: "session" | "step-up") => Promise<void> = () => Promise.reject(new Error("nobody is there"));

export function setAskPassword(ask: typeof askPassword): void {
    askPassword = ask;
}

/** Until who is signed in is known, what needs the token of the session waits. */
let ready: Promise<unknown> = Promise.resolve();
async function send(method: string, path: string, body?: unknown, signal?: AbortSignal): Promise<Early> {
    const response = await fetch(`/api/v1${path}`, {
        method,
        signal: signal ?? null,
        credentials: "same-origin",
        headers: {
            "Accept-Language": language,
            ...(body === undefined ? {} : { "Content-Type": "application/json" }),
            ...(method === "GET" ? {} : { "X-CSRF-Token": csrf }),
            ...(Date.now() - touched > kUnattended ? { "X-Unattended": "1" } : {}),
        },
        body: body === undefined ? null : JSON.stringify(body),
    });
    return { response, text: await response.text() };
}

async function once<T>(method: string, path: string, body?: unknown, signal?: AbortSignal): Promise<T> {
    if (method !== "GET") {
        await ready;
    }
    let answer: Early;
    try {
        const early = window.early?.get(path);
        window.early?.delete(path);
        answer = await (early ?? send(method, path, body, signal));
    } catch (error) {
        if (error instanceof DOMException) {
            throw error;
        }
        noteSilence();
        throw new Problem(0, "offline", "offline");
    }
    const { response, text } = answer;
    let read: any;
    try {
        read = JSON.parse(text);
    } catch {
        read = { code: "failed", detail: text.trim() };
    }
    if (!response.ok) {
        throw new Problem(response.status, read.code, read.detail, read.plan, read.current, read.version, read.candidates);
    }
    return read as T;
}

/** Tries something; where the server wants a password first, asks for it and tries again. */
async function retried<T>(attempt: () => Promise<T>): Promise<T> {
    for (;;) {
        try {
            return await attempt();
        } catch (error) {
            if (error instanceof Problem && error.code === "not_signed_in") {
                await askPassword("session");
            } else if (error instanceof Problem && error.code === "password_required") {
                await askPassword("step-up");
            } else {
                throw error;
            }
        }
    }
}

/** As `once`, but for passwords that are wanted first. */
export const request = <T,>(method: string, path: string, body?: unknown, signal?: AbortSignal) =>
    retried(() => once<T>(method, path, body, signal));

function begin(session: Session): Session {
    csrf = session.csrf;
    return session;
}

export const currentSession = () => {
    const session = once<Session>("GET", "/session").then(begin);
    ready = session.catch(() => {});
    return session;
};
export const signIn = async (login: string, password: string, code: string) =>
    begin(await once<Session>("POST", "/session", { login, password, code }));
export const stepUp = async (password: string, code: string) =>
    begin(await once<Session>("POST", "/session/step-up", { password, code }));
/** A secret for an app, as a text and as a link. */
export interface NewTotp {
    secret: string;
    uri: string;
}
export const beginTotp = () => request<NewTotp>("POST", "/session/totp", {});
export const confirmTotp = async (code: string) => begin(await request<Session>("POST", "/session/totp/confirm", { code }));
export const removeTotp = async () => begin(await request<Session>("DELETE", "/session/totp"));
export const signOut = () => once("DELETE", "/session");
export const setUp = (token: string, password: string) => once<{ login: string }>("POST", "/setup", { token, password });

export interface RunOptions {
    confirm?: string;
    reason?: string;
    dry_run?: boolean;
    if_unchanged?: { command: string; parameters: Values; version: string };
    /** Whether it is for a job, as it is with many; what runs long is one in any case. */
    job?: boolean;
}

/** Something that runs long at the server. */
export interface Job {
    id: number;
    /** The words of its command. */
    what: string;
    login: string;
    begun: boolean;
    over: boolean;
    stopped: boolean;
    can_stop: boolean;
    done: number;
    total: number | null;
    failed: number;
    /** Of its answer, which is there for one request. */
    status: number | null;
    answer: boolean;
    /** Whether it has made one, which its owner may fetch. */
    file: boolean;
    reported: boolean;
    import: boolean;
    /** Whether who is signed in has begun it. */
    own: boolean;
}
export const listJobs = async () => (await request<{ jobs: Job[] }>("GET", "/jobs")).jobs;
export const stopJob = (id: number) => request("POST", "/jobs/stop", { id });
export const takeAnswer = <T = Answer,>(id: number) => once<T>("POST", "/jobs/answer", { id });

export const beginExport = (order: { format: string; in?: string }) => request<{ job: Job }>("POST", "/exports", order);

/** How often a job is looked at by a window that does not hear how far it is. */
const kPause = 3000;
let showJob: (id: number) => void = () => {};
/** Has a function show a job that this page has begun. */
export function setShowJob(show: typeof showJob): void {
    showJob = show;
}

/** Resolves when a job is over. */
const overOf = (id: number) =>
    new Promise<void>((resolve, reject) => {
        const look = () =>
            listJobs().then(jobs => (jobs.find(job => job.id === id)?.over ?? true) && end(resolve), error => end(() => reject(error)));
        const timer = setInterval(look, kPause);
        const endWatch = watchProgress(look);
        const end = (last: () => void) => {
            clearInterval(timer);
            endWatch();
            last();
        };
        void look();
    });

/** Waits for a job that makes a file. @return its id. @throws what stood in the way. */
export async function fileOf(id: number): Promise<number> {
    showJob(id);
    await overOf(id);
    if (!(await listJobs()).find(job => job.id === id)?.file) {
        await takeAnswer(id);
    }
    return id;
}

/** Shows a job until it is over, and takes its answer. */
async function answerOf<T>(id: number): Promise<T> {
    showJob(id);
    await overOf(id);
    return takeAnswer<T>(id);
}

/** Runs a command of the table, such as "user/lock". What is done as a job is waited for. */
export const run = (command: string, parameters: Values, options: RunOptions = {}) =>
    retried(async () => {
        const body = { parameters, ...options };
        if (!options.job && !long.has(command)) {
            return once<Answer>("POST", `/commands/${command}`, body);
        }
        const { job } = await once<{ job: Job }>("POST", `/commands/${command}`, body);
        return answerOf<Answer>(job.id);
    });

export const listPeople = (query: Record<string, string>, signal?: AbortSignal) =>
    request<People>("GET", peoplePath(query), undefined, signal);
export const findNames = (names: string[]) => request<FoundNames>("POST", "/users/find", { names });
export const listPlaces = (parent: string, offset: number) => request<Places>("GET", placesPath(parent, offset));
export const findPlaces = (q: string) =>
    request<{ total: number; rows: (Step & { path: string; trail: Step[] })[] }>(
        "GET",
        `/tree/find?${new URLSearchParams({ q })}`,
    );
/** Looks for what does not hold together in the directory. The command is offered to who may also mend it. */
export const findProblems = async () => (await run("db/check", {}, { job: true })).rows ?? [];
/** How the job of an import stands; the rows are the first ones, and only there when one is asked for. */
export interface Import extends Job {
    dry_run: boolean;
    error: string;
    created: number;
    updated: number;
    unchanged: number;
    exists: number;
    entry: number | null;
    groups: string[];
    group_count: number;
    /** Of people of the scope who are not in the text, where it is the whole list. */
    leavers?: Leavers;
    rows?: Row[];
    failed_rows?: Row[];
    leaver_rows?: Row[];
}
export interface Leavers {
    /** In the scope. */
    people: number;
    leavers: number;
    done: number;
    failed: number;
    /** Rows that may be about anybody: nothing is done about leavers then. */
    unreadable: number;
    /** By which the import is told that these are those whom somebody has seen. */
    digest: string;
}
/** What a text to be imported has. */
export interface Look {
    columns: string[];
    sample: string[][];
    rows: number;
    known: string[];
}
export const sendImportText = (text: string, first: boolean) => request("POST", "/imports/text", { text, first });
export const lookAtImport = (delimiter: string) => request<Look>("POST", "/imports/look", { delimiter });
export const beginImport = async (order: Record<string, Value | (string | null)[]>) =>
    findImport((await request<{ job: Job }>("POST", "/imports", order)).job.id);
export const findImport = (id: number) => request<Import>("GET", `/imports?id=${id}`);
export const listImports = async () => (await request<{ imports: Import[] }>("GET", "/imports")).imports;
export const overview = () => request<Row>("GET", "/overview");
let allowed = new Set<string>();
let noteListed = () => {};
/** Resolves when the table of commands is there. */
export const listed = new Promise<void>(resolve => (noteListed = resolve));
let long = new Set<string>();
/** The table of commands, of which the server offers what who is signed in may run. */
export const listCommands = async () => {
    const { commands, names } = await request<{ commands: Command[]; names: Record<string, string> }>("GET", "/commands");
    setNames(names);
    const pathsOf = (some: Command[]) => new Set(some.map(command => command.path.join("/")));
    allowed = pathsOf(commands);
    long = pathsOf(commands.filter(command => command.long_running));
    noteListed();
    return commands;
};
/** Whether who is signed in may run a command, such as "user/lock"; not before the table is there. */
export const may = (command: string) => allowed.has(command);
