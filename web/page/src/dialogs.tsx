// Questions, and what is said after them.
import type { ComponentChildren } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { type Answer, type Plan, Problem, type RunOptions, type Values, may, run } from "./api";
import { asOwn } from "./events";
import { noteChange } from "./place";
import { retold, t } from "./texts";

type Open = { key: number; content: ComponentChildren };

let show: (open: (close: () => void) => ComponentChildren) => void = () => {};
let say: (text: string, entry?: number) => void = () => {};
let count = 0;

/** Opens a dialog; its content gets a function that closes it. */
export const openDialog = (content: (close: () => void) => ComponentChildren) => show(content);
/** Says something for some seconds; with an entry of the record, offers to undo it. */
export const toast = (text: string, entry?: number) => say(text, entry);

export const sentence = (error: unknown): string =>
    error instanceof Problem
        ? error.code === "offline"
            ? t("offline")
            : retold(error.message) + (error.candidates.length > 0 ? `: ${error.candidates.join(", ")}` : "")
        : String(error);

/** What went wrong, if anything did, where it did. */
export const Trouble = (props: { text?: string }) =>
    props.text ? (
        <p class="trouble" role="alert" dir="auto">
            {props.text}
        </p>
    ) : null;

/** What a form does when it is sent, once at a time. @return what goes wrong, and what begins it. */
export function useWork(work: () => Promise<void>): { trouble: string; begin: (event?: Event) => Promise<void> } {
    const [trouble, setTrouble] = useState("");
    const isBusy = useRef(false);
    const begin = async (event?: Event) => {
        event?.preventDefault();
        if (isBusy.current) {
            return;
        }
        isBusy.current = true;
        setTrouble("");
        try {
            await work();
        } catch (error) {
            setTrouble(sentence(error));
        }
        isBusy.current = false;
    };
    return { trouble, begin };
}

export function Dialog(props: { title: string; onClose: () => void; children: ComponentChildren }) {
    const dialog = useRef<HTMLDialogElement>(null);
    useLayoutEffect(() => {
        const before = document.activeElement;
        dialog.current?.showModal();
        return () => {
            // While it is open nothing else can have the focus.
            dialog.current?.close();
            if (before instanceof HTMLElement) {
                before.focus();
            }
        };
    }, []);
    return (
        <dialog
            ref={dialog}
            class="dialog"
            aria-label={props.title}
            onCancel={event => {
                event.preventDefault();
                props.onClose();
            }}
        >
            <h2 dir="auto">{props.title}</h2>
            {props.children}
        </dialog>
    );
}

export function Dialogs() {
    const [open, setOpen] = useState<Open[]>([]);
    show = content => {
        const key = ++count;
        const close = () => setOpen(before => before.filter(one => one.key !== key));
        setOpen(before => [...before, { key, content: content(close) }]);
    };
    return (
        <>
            {open.map(one => (
                <div key={one.key}>{one.content}</div>
            ))}
        </>
    );
}

export function Toasts() {
    const [shown, setShown] = useState<{ key: number; text: string; entry?: number }[]>([]);
    const drop = (key: number) => setShown(before => before.filter(one => one.key !== key));
    say = (text, entry) => {
        const key = ++count;
        setShown(before => [...before.slice(-2), { key, text, ...(entry ? { entry } : {}) }]);
        setTimeout(() => drop(key), 10000);
    };
    return (
        <div class="toasts" role="status">
            {shown.map(one => (
                <div key={one.key} class="toast">
                    <span dir="auto">{one.text}</span>
                    {one.entry !== undefined && (
                        <button
                            class="link"
                            onClick={() => {
                                drop(one.key);
                                void undo(one.entry as number, true);
                            }}
                        >
                            {t("undo")}
                        </button>
                    )}
                </div>
            ))}
        </div>
    );
}

const kMostLines = 200;

/** Lines that may be many, of which the first are shown. @param further  how many there are beside. */
export function Lines(props: { label: string; lines: string[]; further?: number }) {
    const further = (props.further ?? 0) + Math.max(0, props.lines.length - kMostLines);
    return (
        <ul class="plan" tabIndex={0} aria-label={props.label}>
            {props.lines.slice(0, kMostLines).map((line, i) => (
                <li key={i} dir="auto">
                    {line}
                </li>
            ))}
            {further > 0 && <li>{t("further", { count: further })}</li>}
        </ul>
    );
}

const kMostWithoutTyping = 20;

function PlanDialog(props: { plan: Plan; onEnd: (agreed: boolean) => void }) {
    const { plan } = props;
    const [typed, setTyped] = useState("");
    const isMuch = plan.removed > kMostWithoutTyping;
    return (
        <Dialog title={plan.question} onClose={() => props.onEnd(false)}>
            <form
                onSubmit={event => {
                    event.preventDefault();
                    props.onEnd(true);
                }}
            >
                <Lines label={plan.question} lines={plan.lines} further={plan.further_lines} />
                {isMuch && (
                    <label class="field">
                        {t("removes", { count: plan.removed })} {t("typenumber", { count: String(plan.removed) })}
                        <input value={typed} inputMode="numeric" onInput={event => setTyped(event.currentTarget.value)} />
                    </label>
                )}
                <div class="buttons">
                    <button type="button" onClick={() => props.onEnd(false)}>
                        {t("cancel")}
                    </button>
                    <button class="danger" disabled={isMuch && typed !== String(plan.removed)}>
                        {t("goon")}
                    </button>
                </div>
            </form>
        </Dialog>
    );
}

const agreesTo = (plan: Plan) =>
    new Promise<boolean>(resolve =>
        openDialog(close => (
            <PlanDialog
                plan={plan}
                onEnd={agreed => {
                    close();
                    resolve(agreed);
                }}
            />
        )),
    );

/** Outcomes that are named one by one. */
const kMostSaid = 3;

/** Runs a command that changes something, shows what it asks, and says what became of it. @return null: not agreed. */
export async function change(
    command: string,
    parameters: Values,
    options: RunOptions = {},
    isAgreed = false,
): Promise<Answer | null> {
    let asked = options;
    for (;;) {
        try {
            const answer = await asOwn(run(command, parameters, asked));
            const said = (answer.outcomes ?? []).map(outcome => retold(outcome.message));
            const further = said.length > kMostSaid ? [t("further", { count: said.length - kMostSaid })] : [];
            if (said.length > 0 || answer.changed) {
                toast(
                    [...said.slice(0, kMostSaid), ...further].join("; ") || t("saved"),
                    may("audit/undo") ? (answer.entry ?? undefined) : undefined,
                );
            }
            if (answer.changed) {
                noteChange();
            }
            return answer;
        } catch (error) {
            if (!(error instanceof Problem) || !error.plan || error.code === "password_required") {
                throw error;
            }
            if (!(isAgreed && error.code === "confirmation_required") && !(await agreesTo(error.plan))) {
                return null;
            }
            asked = { ...asked, confirm: error.plan.digest };
        }
    }
}

/** The same, where a toast is enough for what goes wrong. */
export async function changeOrSay(
    command: string,
    parameters: Values,
    isAgreed = false,
    options: RunOptions = {},
): Promise<Answer | null> {
    try {
        return await change(command, parameters, options, isAgreed);
    } catch (error) {
        toast(sentence(error));
        return null;
    }
}

/** @param isAgreed  whether nothing is asked first, as right after the change. */
export const undo = (entry: number, isAgreed = false) => changeOrSay("audit/undo", { ID: [String(entry)] }, isAgreed);

export interface Asked {
    name: string;
    label: string;
    value?: string;
    type?: string;
    required?: boolean;
    help?: string;
    suggest?: (text: string) => Promise<string[]>;
}

function Suggesting(props: { field: Asked; id: string; value: string; onInput: (text: string) => void }) {
    const [found, setFound] = useState<string[]>([]);
    const { field } = props;
    return (
        <>
            <input
                id={props.id}
                type={field.type ?? "text"}
                dir="auto"
                aria-describedby={field.help ? `${props.id}-help` : undefined}
                autocomplete={field.type === "password" ? "new-password" : "off"}
                value={props.value}
                required={field.required}
                list={field.suggest ? `${props.id}-list` : undefined}
                onInput={event => {
                    const text = event.currentTarget.value;
                    props.onInput(text);
                    if (field.suggest) {
                        field.suggest(text).then(setFound, () => setFound([]));
                    }
                }}
            />
            {field.help && (
                <p class="help" id={`${props.id}-help`}>
                    {field.help}
                </p>
            )}
            {field.suggest && (
                <datalist id={`${props.id}-list`}>
                    {found.map(one => (
                        <option key={one} value={one} />
                    ))}
                </datalist>
            )}
        </>
    );
}

function FormDialog(props: {
    title: string;
    fields: Asked[];
    action: string;
    onClose: () => void;
    onSubmit: (values: Record<string, string>) => Promise<boolean>;
}) {
    const [values, setValues] = useState<Record<string, string>>(
        Object.fromEntries(props.fields.map(field => [field.name, field.value ?? ""])),
    );
    const { trouble, begin } = useWork(async () => {
        if (await props.onSubmit(values)) {
            props.onClose();
        }
    });
    const action = useRef<HTMLButtonElement>(null);
    // Where nothing is to be entered, Enter agrees.
    useLayoutEffect(() => {
        props.fields.length === 0 && action.current?.focus();
    }, []);
    return (
        <Dialog title={props.title} onClose={props.onClose}>
            <form onSubmit={begin}>
                <Trouble text={trouble} />
                {props.fields.map(field => (
                    <div class="field" key={field.name}>
                        <label for={`ask-${field.name}`}>{field.label}</label>
                        <Suggesting
                            field={field}
                            id={`ask-${field.name}`}
                            value={values[field.name] ?? ""}
                            onInput={text => setValues(before => ({ ...before, [field.name]: text }))}
                        />
                    </div>
                ))}
                <div class="buttons">
                    <button type="button" onClick={props.onClose}>
                        {t("cancel")}
                    </button>
                    <button ref={action} class="main">
                        {props.action}
                    </button>
                </div>
            </form>
        </Dialog>
    );
}

/** Asks for some values and hands them over; stays open when that fails. */
export const askFor = (
    title: string,
    fields: Asked[],
    action: string,
    onSubmit: (values: Record<string, string>) => Promise<boolean>,
) =>
    openDialog(close => <FormDialog title={title} fields={fields} action={action} onClose={close} onSubmit={onSubmit} />);

/** Asks a question that is answered by yes or no. */
export const confirmed = (question: string, action: string) =>
    new Promise<boolean>(resolve =>
        openDialog(close => {
            const end = (answer: boolean) => {
                close();
                resolve(answer);
            };
            return (
                <Dialog title={question} onClose={() => end(false)}>
                    <div class="buttons">
                        <button onClick={() => end(false)}>{t("cancel")}</button>
                        <button class="danger" onClick={() => end(true)}>
                            {action}
                        </button>
                    </div>
                </Dialog>
            );
        }),
    );
