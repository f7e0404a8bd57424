// The frame: top bar, areas, and the page of the area.
import { render } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import {
    type Command,
    Problem,
    type Session,
    currentSession,
    listCommands,
    may,
    setAskPassword,
    signOut,
} from "./api";
import { Dialogs, Toasts, openDialog, sentence, toast } from "./dialogs";
import { Board } from "./board";
import { ContextMenu } from "./context";
import { Directory } from "./directory";
import { Documents } from "./documents";
import type { Key } from "./en";
import { Nouns, type OwnView } from "./generic";
import { beginEvents } from "./events";
import { Icon } from "./icons";
import { JobsMenu } from "./jobs";
import { areKeysOn, openKeys, switchKeys, useKey } from "./keys";
import { beginMenus } from "./menus";
import { Silence } from "./offline";
import { Matrix } from "./matrix";
import { ImportPage } from "./import";
import { askNames, namesIn } from "./names";
import { askUser } from "./people";
import { Audit, Overview, Why } from "./pages";
import { type Where, go, useWhere } from "./place";
import { SetupPage, SignInDialog, SignInPage } from "./signin";
import { TwoStepOffer, TwoStepPage, openTwoStep } from "./twostep";
import { language, languages } from "./language";
import { setLanguage, t } from "./texts";
import { isDark, switchTheme } from "./theme";

/** Areas, and the nouns of the table that each shows. */
const areas: { name: string; nouns?: string[] }[] = [
    { name: "overview" },
    { name: "directory" },
    { name: "import" },
    { name: "roles", nouns: ["role"] },
    { name: "why" },
    { name: "rights", nouns: ["right", "objright"] },
    { name: "documents", nouns: ["docroot", "folder", "plan", "doclog"] },
    { name: "messages", nouns: ["message", "loginlog"] },
    { name: "addins", nouns: ["addin", "package"] },
    { name: "board", nouns: ["board"] },
    { name: "settings", nouns: ["setting", "console"] },
    { name: "audit" },
    // What has no place of its own, and what the table may have one day.
    { name: "more", nouns: ["user", "group", "view", "member", "title", "audit"] },
];

/** The nouns of an area, as far as the table has them. */
function nounsOf(area: { name: string; nouns?: string[] }, commands: Command[]): string[] {
    const all = [...new Set(commands.map(command => command.path[0] as string))];
    const placed = areas.flatMap(other => other.nouns ?? []);
    const own = (area.nouns ?? []).filter(noun => all.includes(noun));
    return area.name === "more" ? [...own, ...all.filter(noun => !placed.includes(noun))] : own;
}

function Search(props: { where: Where }) {
    const input = useRef<HTMLInputElement>(null);
    const { path, query } = props.where;
    useKey("/", () => input.current?.focus());
    useKey("?", openKeys);
    // The list has its own, which proposes the place that it shows.
    useKey("n", () => !document.getElementById("people") && may("user/create") && askUser("", id => void go("/directory", { user: String(id) })));
    const search = (q: string) =>
        void go("/directory", path === "/directory" ? { ...query, q } : { q }, path === "/directory" && query["q"] ? "replace" : "keep");
    return (
        <div class="search" role="search">
            <Icon name="search" />
            <input
                ref={input}
                type="search"
                dir="auto"
                aria-label={t("search")}
                placeholder={t("search")}
                value={path === "/directory" ? (query["q"] ?? "") : ""}
                onInput={event => !event.isComposing && search(event.currentTarget.value)}
                onCompositionEnd={event => search(event.currentTarget.value)}
                onKeyDown={event => event.key === "Escape" && search("")}
                onPaste={event => {
                    const text = event.clipboardData?.getData("text/plain") ?? "";
                    if (namesIn(text).length > 1) {
                        event.preventDefault();
                        askNames(text);
                    }
                }}
            />
            <kbd aria-hidden="true">/</kbd>
        </div>
    );
}

function UserMenu(props: { session: Session; onSession: (session: Session) => void }) {
    const [, redraw] = useState(0);
    return (
        <details class="menu user">
            <summary dir="auto">{props.session.name || props.session.login}</summary>
            <div class="popup">
                <button
                    onClick={() => {
                        switchTheme();
                        redraw(before => before + 1);
                    }}
                >
                    {t("theme", { name: t(isDark() ? "theme.light" : "theme.dark") })}
                </button>
                <label>
                    {t("language")}{" "}
                    <select value={language} onChange={event => setLanguage(event.currentTarget.value)}>
                        {Object.entries(languages).map(([code, name]) => (
                            <option key={code} value={code}>
                                {name}
                            </option>
                        ))}
                    </select>
                </label>
                <button onClick={openKeys}>
                    {t("keys.title")}… <kbd>?</kbd>
                </button>
                <label>
                    <input type="checkbox" checked={areKeysOn()} onChange={event => switchKeys(event.currentTarget.checked)} />{" "}
                    {t("keys.single")}
                </label>
                <button onClick={() => openTwoStep(props.onSession)}>{t("totp")}…</button>
                <button
                    onClick={async () => {
                        await signOut().catch(() => undefined);
                        location.assign("/");
                    }}
                >
                    {t("signout")}
                </button>
            </div>
        </details>
    );
}

/** What areas show in a way of their own, before the forms of their nouns. */
function ownView(area: string, where: Where, commands: Command[]): OwnView | undefined {
    switch (area) {
        case "rights":
            return { name: "matrix", title: t("matrix.title"), view: () => <Matrix /> };
        case "documents":
            return { name: "tree", title: t("documents.tree"), view: () => <Documents where={where} commands={commands} /> };
        case "board":
            return { name: "board", title: t("board.title"), view: () => <Board where={where} /> };
        default:
            return undefined;
    }
}

function Page(props: { where: Where; commands: Command[] }) {
    const name = props.where.path.slice(1) || "directory";
    const area = areas.find(one => one.name === name) ?? areas[1];
    const { commands } = props;
    switch (area?.name) {
        case "overview":
            return <Overview />;
        case "why":
            return <Why where={props.where} />;
        case "import":
            return <ImportPage />;
        case "audit":
            return <Audit where={props.where} />;
        default:
            return area?.nouns ? (
                commands.length === 0 ? (
                    <div class="page">
                        <h1>{t(`area.${area.name}` as Key)}</h1>
                    </div>
                ) : (
                <Nouns
                    key={area.name}
                    area={area.name}
                    title={t(`area.${area.name}` as Key)}
                    nouns={nounsOf(area, commands)}
                    own={ownView(area.name, props.where, commands)}
                    chosen={props.where.query["noun"]}
                    commands={commands}
                />
                )
            ) : (
                <Directory where={props.where} />
            );
    }
}

/** One-time codes that are to be set up first have a page of their own. */
const isToSay = (error: unknown) => !(error instanceof Problem && error.code === "totp_required");

/** @param props.session  undefined until the server has said who is signed in. */
function Frame(props: { session: Session | undefined; onSession: (session: Session) => void }) {
    const { session } = props;
    const where = useWhere();
    const [commands, setCommands] = useState(given.commands ?? []);
    const isListed = useRef(given.commands !== undefined);
    const level = useRef<string>();
    useEffect(() => {
        // The server knows who asks before this page does.
        if (!isListed.current || (level.current !== undefined && level.current !== session?.level)) {
            isListed.current = true;
            nextCommands().then(setCommands, error => isToSay(error) && toast(sentence(error)));
        }
        level.current = session?.level;
    }, [session?.level]);
    useEffect(beginEvents, []);
    const name = where.path.slice(1) || "directory";
    useEffect(() => {
        const title = t(`area.${areas.find(one => one.name === name)?.name ?? "directory"}` as Key);
        document.title = `${title.replaceAll("\u00ad", "")} – ${t("product")}`;
        // Where areas are a bar, it has more of them than fit.
        document.querySelector(".areas [aria-current]")?.scrollIntoView({ block: "nearest", inline: "nearest" });
    }, [name]);
    return (
        <div class="frame">
            <a class="skip" href="#content">
                {t("skip")}
            </a>
            <header class="top">
                <span class="product">
                    <img src="/icon.svg" alt="" width="20" height="20" /> {t("product")}
                </span>
                <span class="engine muted">{session?.engine}</span>
                <Search where={where} />
                <JobsMenu />
                {session && <UserMenu session={session} onSession={props.onSession} />}
            </header>
            {session && <TwoStepOffer key={session.id} session={session} onDone={props.onSession} />}
            <nav class="areas" aria-label={t("areas")}>
                {areas.filter(area => area.name !== "import" || (session?.level ?? "full") === "full").map(area => (
                    <a
                        key={area.name}
                        href={`/${area.name}`}
                        aria-current={area.name === name ? "page" : undefined}
                        onClick={event => {
                            event.preventDefault();
                            void go(`/${area.name}`);
                        }}
                    >
                        <Icon name={area.name} />
                        <span>{t(`area.${area.name}` as Key)}</span>
                    </a>
                ))}
            </nav>
            <main id="content" tabIndex={-1}>
                <Page where={where} commands={commands} />
                <ContextMenu />
            </main>
        </div>
    );
}

/** Whether the server has seen a session when it sent the page. */
const wasSignedIn = window.early !== undefined;
/** Whose it is; asked for before anything that waits for it. */
const firstSession = wasSignedIn ? currentSession() : undefined;
/** What there is of it, and of the table of commands, when the page is drawn first. */
const given: { session?: Session; commands?: Command[] } = {};
let firstCommands = wasSignedIn ? listCommands() : undefined;
/** The table, as it comes with the page the first time. */
function nextCommands(): Promise<Command[]> {
    const first = firstCommands;
    firstCommands = undefined;
    return first?.catch(listCommands) ?? listCommands();
}

function App() {
    const where = useWhere();
    const [session, setSession] = useState<Session | null | undefined>(wasSignedIn ? given.session : null);
    const [login, setLogin] = useState("");
    const [notice, setNotice] = useState("");
    const present = useRef<Session | null>();
    present.current = session;
    useEffect(() => {
        firstSession?.then(setSession, error => {
            setSession(null);
            setNotice(error instanceof Problem && error.code !== "not_signed_in" ? sentence(error) : "");
        });
        let waiting: Promise<void> | undefined;
        setAskPassword(why => {
            if (!present.current) {
                // The page that has asked gives way to the one for signing in.
                return new Promise(() => {});
            }
            // Whatever else is refused meanwhile waits for the same answer.
            waiting ??= new Promise<void>((resolve, reject) =>
                openDialog(close => (
                    <SignInDialog
                        why={why}
                        login={present.current?.login ?? ""}
                        onDone={done => {
                            setSession(done);
                            close();
                            resolve();
                        }}
                        onClose={() => {
                            close();
                            reject(new Problem(401, "not_signed_in", t("signin.again")));
                        }}
                    />
                )),
            ).finally(() => {
                waiting = undefined;
            });
            return waiting;
        });
    }, []);
    let page = null;
    if (where.path === "/setup") {
        page = (
            <SetupPage
                onDone={name => {
                    setLogin(name);
                    setNotice(t("setup.done"));
                }}
            />
        );
    } else if (session === null) {
        page = <SignInPage key={login} login={login} notice={notice} onDone={setSession} />;
    } else if (session?.totp_required) {
        page = <TwoStepPage onDone={setSession} />;
    } else {
        page = <Frame session={session} onSession={setSession} />;
    }
    return (
        <>
            {page}
            <Dialogs />
            <Silence />
            <Toasts />
        </>
    );
}

/** How long the first look at the page waits for what it is to show. */
const kPatience = 50;
beginMenus();
const early = Promise.allSettled([
    firstSession?.then(session => (given.session = session)),
    firstCommands?.then(commands => (given.commands = commands)),
    ...(window.early?.values() ?? []),
]);
void Promise.race([early, new Promise(resolve => setTimeout(resolve, kPatience))]).then(() =>
    render(<App />, document.getElementById("page") as HTMLElement),
);
