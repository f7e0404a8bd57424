// Whatever the table of commands has: a list, and a form for each of its commands.
import type { ComponentChildren } from "preact";
import { useEffect, useState } from "preact/hooks";
import { useAnswer } from "./answers";
import { type Answer, type Command, type Parameter, type Row, type RunOptions, type Value, type Values, run } from "./api";
import { Dialog, Trouble, change, changeOrSay, openDialog, sentence, toast, useWork } from "./dialogs";
import { go } from "./place";
import { RecordView, Table } from "./table";
import { commandName, nounName, retold, t, verbName, words } from "./texts";

const pathOf = (command: Command) => command.path.join("/");
const offered = (command: Command) => command.parameters.filter(parameter => parameter.kind !== "file");

/** The command that lists a noun without being told more. */
const listOf = (commands: Command[]) =>
    commands.find(
        command =>
            command.effect === "read" &&
            command.path[1] === "list" &&
            !command.parameters.some(parameter => parameter.required),
    ) ??
    commands.find(
        command =>
            command.effect === "read" &&
            command.columns.length > 0 &&
            !command.parameters.some(parameter => parameter.required),
    );

function Input(props: { parameter: Parameter; value: string; onInput: (text: string) => void }) {
    const { parameter, value } = props;
    const id = `parameter-${parameter.name}`;
    const take = (event: { currentTarget: { value: string } }) => props.onInput(event.currentTarget.value);
    return (
        <div class="field">
            <label for={id}>
                {words(parameter.name)}
                {parameter.required ? " *" : ""}
            </label>
            {parameter.kind === "flag" ? (
                <select id={id} value={value} onChange={take} aria-describedby={`${id}-help`}>
                    <option value="">{t("generic.unset")}</option>
                    <option value="1">{t("yes")}</option>
                    <option value="0">{t("no")}</option>
                </select>
            ) : parameter.choices ? (
                <select id={id} value={value} required={parameter.required} onChange={take} aria-describedby={`${id}-help`}>
                    <option value="" />
                    {parameter.choices.map(choice => (
                        <option key={choice}>{choice}</option>
                    ))}
                </select>
            ) : parameter.list ? (
                <textarea id={id} dir="auto" rows={3} value={value} required={parameter.required} onInput={take} aria-describedby={`${id}-help`} />
            ) : (
                <input
                    id={id}
                    dir="auto"
                    type={parameter.kind === "secret" ? "password" : "text"}
                    autocomplete={parameter.kind === "secret" ? "new-password" : "off"}
                    inputMode={parameter.kind === "number" ? "numeric" : "text"}
                    required={parameter.required}
                    value={value}
                    onInput={take}
                    aria-describedby={`${id}-help`}
                />
            )}
            <p class="help" id={`${id}-help`} dir="auto">
                {retold(parameter.help)}
                {parameter.list ? `; ${t("generic.lines")}` : ""}
            </p>
        </div>
    );
}

/** What was entered, as the server takes it. @param present  what is there already, and not sent. */
function valuesOf(command: Command, texts: Record<string, string>, present: Record<string, string>): Values {
    const values: Values = {};
    for (const parameter of offered(command)) {
        const text = texts[parameter.name] ?? "";
        const before = present[parameter.name] ?? "";
        if (text === before) {
            continue;
        }
        if (parameter.kind === "flag") {
            values[parameter.name] = text === "1";
        } else if (parameter.list) {
            values[parameter.name] = text.split("\n").filter(line => line !== "");
        } else {
            values[parameter.name] = text;
        }
    }
    return values;
}

export function AnswerView(props: { command: Command | undefined; answer: Answer }) {
    const { answer } = props;
    return (
        <>
            {answer.finding && (
                <>
                    <p class="verdict" dir="auto">
                        {answer.finding.sentence}
                    </p>
                    {answer.finding.rows.length > 0 && (
                        <Table label={t("area.why")} columns={Object.keys(answer.finding.rows[0] ?? {})} rows={answer.finding.rows} />
                    )}
                    {answer.finding.notes.map(note => (
                        <p key={note} dir="auto">
                            {note}
                        </p>
                    ))}
                </>
            )}
            <Trouble text={answer.error} />
            {answer.verdict !== undefined && <p class="verdict">{answer.verdict ? t("yes") : t("no")}</p>}
            {answer.value !== undefined && <p class="verdict">{String(answer.value)}</p>}
            {answer.password && <p class="secret">{answer.password}</p>}
            {answer.outcomes?.map((outcome, i) => (
                <p key={i} dir="auto">
                    {outcome.message}
                </p>
            ))}
            {answer.record && !answer.finding && <RecordView record={answer.record} />}
            {Object.entries(answer.finding ? {} : (answer.parts ?? {})).map(([name, rows]) => (
                <section key={name}>
                    <h2>{words(name)}</h2>
                    <Table label={words(name)} columns={Object.keys(rows[0] ?? {})} rows={rows} />
                </section>
            ))}
            {answer.rows && <Table label={t("generic.list")} columns={answer.columns ?? []} rows={answer.rows} />}
            {answer.cut && <p>{t("generic.cut", { count: answer.rows?.length ?? 0 })}</p>}
            {answer.notes?.map(note => (
                <p key={note} dir="auto">
                    {note}
                </p>
            ))}
        </>
    );
}

/** One thing that a command is about, which nobody is asked for. */
interface Subject {
    title: string;
    /** The parameter that names it, and what it is named by. */
    parameter: string;
    name: string;
    /** As it is now, where it is to be changed. */
    record?: Row;
    /** By which the server knows whether it is still so. */
    unchanged?: RunOptions;
}

/** The subject, as a command takes it. */
const namedIn = (command: Command, subject: Subject): Values => {
    const isList = command.parameters.some(parameter => parameter.name === subject.parameter && parameter.list);
    return { [subject.parameter]: isList ? [subject.name] : subject.name };
};

const asText = (value: Value | undefined) =>
    typeof value === "boolean" ? (value ? "1" : "0") : value === null || value === undefined ? "" : String(value);

/** What a command that changes a subject begins with: its values, as far as they have the names of parameters. */
const textsOf = (command: Command, record: Row = {}): Record<string, string> =>
    Object.fromEntries(
        offered(command)
            .filter(parameter => !parameter.positional && !parameter.list && parameter.name in record)
            .map(parameter => [parameter.name, asText(record[parameter.name])]),
    );

/** @param props.isBegun  whether it is run at once with these values. */
function CommandDialog(props: {
    command: Command;
    values: Record<string, string>;
    isBegun: boolean;
    subject?: Subject | undefined;
    onClose: () => void;
}) {
    const { command, subject } = props;
    const [present] = useState(() => textsOf(command, subject?.record));
    const [texts, setTexts] = useState({ ...present, ...props.values });
    const [reason, setReason] = useState("");
    const [answer, setAnswer] = useState<Answer>();
    const writes = command.effect !== "read";
    const { trouble, begin } = useWork(async () => {
        const given = valuesOf(command, texts, present);
        const values = subject ? { ...given, ...namedIn(command, subject) } : given;
        const result = writes
            ? await change(pathOf(command), values, { ...subject?.unchanged, ...(reason ? { reason } : {}) })
            : await run(pathOf(command), values);
        if (!result) {
            return;
        }
        if (writes && !result.password && !result.record && !result.rows) {
            props.onClose();
        } else {
            setAnswer(result);
        }
    });
    useEffect(() => {
        if (props.isBegun) {
            void begin();
        }
    }, []);
    // What the command is about first, before options that only say it more exactly.
    const asked = offered(command)
        .filter(parameter => parameter.name !== subject?.parameter)
        .sort((one, other) => Number(other.positional) - Number(one.positional));
    const isChange = subject?.record !== undefined;
    if (subject && !writes && props.isBegun && asked.every(parameter => !parameter.required)) {
        return (
            <Dialog title={`${subject.title}: ${verbName(command.path)}`} onClose={props.onClose}>
                <Trouble text={trouble} />
                {answer && <AnswerView command={command} answer={answer} />}
                <div class="buttons">
                    <button onClick={props.onClose}>{t("close")}</button>
                </div>
            </Dialog>
        );
    }
    return (
        <Dialog title={subject ? `${subject.title}: ${verbName(command.path)}` : commandName(command.path)} onClose={props.onClose}>
            {!isChange && (
                <p class="muted" dir="auto">
                    {command.summary}
                </p>
            )}
            <form onSubmit={begin}>
                <Trouble text={trouble} />
                {asked.map(parameter => (
                    <Input
                        key={parameter.name}
                        parameter={parameter}
                        value={texts[parameter.name] ?? ""}
                        onInput={text => setTexts(before => ({ ...before, [parameter.name]: text }))}
                    />
                ))}
                {writes && (
                    <div class="field">
                        <label for="reason">{t("reason")}</label>
                        <input id="reason" dir="auto" value={reason} onInput={event => setReason(event.currentTarget.value)} />
                    </div>
                )}
                {answer && <AnswerView command={command} answer={answer} />}
                <div class="buttons">
                    <button type="button" onClick={props.onClose}>
                        {t("close")}
                    </button>
                    <button class={command.effect === "remove" ? "danger" : "main"}>{t(isChange ? "save" : "generic.run")}</button>
                </div>
            </form>
        </Dialog>
    );
}

export const openCommand = (command: Command, values: Record<string, string> = {}, isBegun = false, subject?: Subject) =>
    openDialog(close => <CommandDialog command={command} values={values} isBegun={isBegun} subject={subject} onClose={close} />);

/** Whether a command takes nothing beside what names its subject, and options. */
const isAlone = (command: Command) => command.parameters.filter(parameter => parameter.positional).length === 1;

/** What a row says of what a command asks for. */
const valuesIn = (row: Row, command: Command): Record<string, string> =>
    Object.fromEntries(
        offered(command)
            .slice(1)
            .map(parameter => [parameter.name, asText(row[parameter.name.toLowerCase()])]),
    );

/**
 * Begins what can be done with one thing: what asks for nothing else is done, or shown, at once.
 * @param values  of other parameters, as far as they are known.
 */
async function beginWith(
    command: Command,
    show: Command | undefined,
    subject: Subject,
    values: Record<string, string> = {},
): Promise<void> {
    const path = pathOf(command);
    if (command.effect === "remove" && isAlone(command)) {
        await changeOrSay(path, { ...valuesOf(command, values, {}), ...namedIn(command, subject) });
    } else if (command.path[1] === "set" && show && subject.parameter === parameterOf(show)) {
        try {
            const named = { [subject.parameter]: subject.name };
            const { record, version } = await run(pathOf(show), named);
            const unchanged = version ? { if_unchanged: { command: pathOf(show), parameters: named, version } } : {};
            openCommand(command, {}, false, { ...subject, ...(record ? { record } : {}), unchanged });
        } catch (error) {
            toast(sentence(error));
        }
    } else {
        openCommand(command, values, command.effect === "read", subject);
    }
}

/** The parameter that names what a command is about. */
const parameterOf = (command: Command) => command.parameters.find(parameter => parameter.positional)?.name;

/** Everything about one thing, and what can be done with it. */
function SubjectDialog(props: { show: Command; commands: Command[]; subject: Subject; onClose: () => void }) {
    const { show, subject } = props;
    const { answer, trouble } = useAnswer(pathOf(show), { [subject.parameter]: subject.name });
    return (
        <Dialog title={subject.title} onClose={props.onClose}>
            <Trouble text={trouble} />
            {answer && <AnswerView command={show} answer={answer} />}
            <div class="bar" role="group" aria-label={t("generic.do")}>
                {props.commands
                    .filter(command => command !== show && parameterOf(command) === subject.parameter)
                    .map(command => (
                        <button
                            key={pathOf(command)}
                            class={command.effect === "remove" ? "danger" : ""}
                            title={command.summary}
                            onClick={async () => {
                                await beginWith(command, show, subject);
                                command.path[1] === "delete" && props.onClose();
                            }}
                        >
                            {verbName(command.path)}
                        </button>
                    ))}
            </div>
            <div class="buttons">
                <button onClick={props.onClose}>{t("close")}</button>
            </div>
        </Dialog>
    );
}

/** What stands for a row where a command takes one: its id, or what names it. */
function nameOf(noun: string, row: Row, parameter: Parameter): string {
    const id = row["id"];
    if (id === undefined || parameter.kind === "number" || parameter.name === "ID") {
        return String(id ?? row["name"] ?? "");
    }
    return noun === "view" ? `view:${id}` : noun === "setting" ? String(row["name"] ?? "") : `id:${id}`;
}

/** @param props.isAlone  whether the page's heading tells the noun. */
function Noun(props: { noun: string; isAlone: boolean; commands: Command[] }) {
    const list = listOf(props.commands);
    const { answer, trouble } = useAnswer(list && pathOf(list), {});
    const commandOf = (verb: string) => props.commands.find(command => command.path[1] === verb && command.path.length === 2);
    const show = commandOf("show");
    const inRow = ["set", "delete", "remove"]
        .map(commandOf)
        .filter((command): command is Command => !!command && parameterOf(command) !== undefined)
        .filter(command => command.path[1] !== "remove" || isAlone(command));
    const subjectOf = (row: Row, command: Command): Subject => {
        const parameter = command.parameters.find(one => one.positional) as Parameter;
        const name = nameOf(props.noun, row, parameter);
        return { title: asText(row["name"] || row["login"]) || name, parameter: parameter.name, name };
    };
    return (
        <section class="noun" data-noun={props.noun}>
            {!props.isAlone && <h2>{nounName(props.noun)}</h2>}
            <div class="bar" role="group" aria-label={t("generic.do")}>
                {props.commands
                    .filter(command => command !== list || command.parameters.length > 0)
                    .map(command => (
                        <button
                            key={pathOf(command)}
                            class={command.effect === "remove" ? "danger" : ""}
                            title={command.summary}
                            onClick={() => openCommand(command)}
                        >
                            {verbName(command.path)}
                        </button>
                    ))}
            </div>
            <Trouble text={trouble} />
            {answer?.record && <RecordView record={answer.record} />}
            {answer?.rows && (
                <Table
                    label={nounName(props.noun)}
                    columns={answer.columns ?? []}
                    rows={answer.rows}
                    {...(show || inRow.length > 0
                        ? {
                              action: (row: Row) => (
                                  <>
                                      {show && (
                                          <button
                                              class="link"
                                              onClick={() =>
                                                  openDialog(close => (
                                                      <SubjectDialog
                                                          show={show}
                                                          commands={props.commands}
                                                          subject={subjectOf(row, show)}
                                                          onClose={close}
                                                      />
                                                  ))
                                              }
                                          >
                                              {t("generic.show")}
                                          </button>
                                      )}
                                      {inRow.map(command => (
                                          <button
                                              key={pathOf(command)}
                                              class="link"
                                              onClick={() => void beginWith(command, show, subjectOf(row, command), show ? {} : valuesIn(row, command))}
                                          >
                                              {verbName(command.path)}
                                          </button>
                                      ))}
                                  </>
                              ),
                          }
                        : {})}
                />
            )}
            {answer?.cut && <p>{t("generic.cut", { count: answer.rows?.length ?? 0 })}</p>}
        </section>
    );
}

/** A tab that has a view of its own, before those of the nouns; with the name of a noun, in place of that one's. */
export interface OwnView {
    name: string;
    title: string;
    view: () => ComponentChildren;
}

export function Nouns(props: {
    area: string;
    title: string;
    nouns: string[];
    own?: OwnView | undefined;
    chosen: string | undefined;
    commands: Command[];
}) {
    const { own } = props;
    const names = [...(own ? [own.name] : []), ...props.nouns.filter(other => other !== own?.name)];
    const noun = props.chosen && names.includes(props.chosen) ? props.chosen : (names[0] as string);
    return (
        <div class="page">
            <h1>{props.title}</h1>
            {names.length > 1 && (
                <nav class="tabs" aria-label={props.title}>
                    {names.map(other => (
                        <a
                            key={other}
                            href={`/${props.area}?noun=${other}`}
                            aria-current={other === noun ? "page" : undefined}
                            onClick={event => {
                                event.preventDefault();
                                void go(`/${props.area}`, { noun: other });
                            }}
                        >
                            {other === own?.name ? own.title : nounName(other)}
                        </a>
                    ))}
                </nav>
            )}
            {noun === own?.name ? (
                own.view()
            ) : (
                <Noun key={noun} noun={noun} isAlone={names.length === 1} commands={props.commands.filter(command => command.path[0] === noun)} />
            )}
        </div>
    );
}
