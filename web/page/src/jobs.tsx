// What runs long at the server: how far it is, and what became of it.
import { useEffect, useState } from "preact/hooks";
import { type Job, Problem, listJobs, setShowJob, stopJob, takeAnswer } from "./api";
import { Dialog, Trouble, openDialog, sentence, toast } from "./dialogs";
import { watchProgress } from "./events";
import { AnswerView } from "./generic";
import { openPasswords } from "./people";
import { commandName, t } from "./texts";

const kPause = 3000;

/** The jobs as they stand, the youngest first. */
function useJobs(): Job[] {
    const [jobs, setJobs] = useState<Job[]>([]);
    const isIdle = jobs.every(job => job.over);
    useEffect(() => {
        // What cannot be asked for now is asked for with the next news.
        const look = () => void listJobs().then(setJobs, () => undefined);
        look();
        const end = watchProgress(look);
        const timer = isIdle ? undefined : setInterval(look, kPause);
        return () => {
            end();
            clearInterval(timer);
        };
    }, [isIdle]);
    return jobs;
}

function Progress(props: { job: Job }) {
    const { job } = props;
    if (job.over) {
        const isDone = job.status === 200;
        return <span>{t(job.stopped ? "job.stopped" : isDone ? "job.done" : "job.refused")}</span>;
    }
    if (!job.begun) {
        return <span>{t("job.waits")}</span>;
    }
    return (
        <>
            <progress aria-label={commandName(job.what.split(" "))} {...(job.total ? { value: job.done / job.total } : {})} />{" "}
            {job.total === null ? "" : t("import.progress", { done: job.done, total: job.total })}
        </>
    );
}

const stop = (id: number) => void stopJob(id).catch(error => toast(sentence(error)));

/** Shows what a job has come to, to who has begun it but does not wait for it any more. */
async function showAnswer(job: Job): Promise<void> {
    try {
        const answer = await takeAnswer(job.id);
        if (answer.passwords) {
            openPasswords(answer.passwords);
            return;
        }
        openDialog(close => (
            <Dialog title={commandName(job.what.split(" "))} onClose={close}>
                <AnswerView command={undefined} answer={answer} />
                <div class="buttons">
                    <button onClick={close}>{t("close")}</button>
                </div>
            </Dialog>
        ));
    } catch (error) {
        toast(error instanceof Problem && error.plan ? error.plan.question : sentence(error));
    }
}

/** Jobs whose answers this page waits for. */
const awaited = new Set<number>();

export function JobsMenu() {
    const jobs = useJobs();
    if (jobs.length === 0) {
        return null;
    }
    const running = jobs.filter(job => !job.over).length;
    return (
        <details class="menu jobs">
            <summary>{t("jobs.count", { count: running })}</summary>
            <ul class="popup" aria-label={t("jobs")}>
                {jobs.map(job => (
                    <li key={job.id}>
                        <strong>{commandName(job.what.split(" "))}</strong> <bdi class="muted">{job.login}</bdi>
                        <div>
                            <Progress job={job} />
                        </div>
                        <div class="bar">
                            {job.can_stop && <button onClick={() => stop(job.id)}>{t("import.stop")}</button>}
                            {job.over && job.own && job.answer && !awaited.has(job.id) && (
                                <button onClick={() => void showAnswer(job)}>{t("generic.show")}</button>
                            )}
                            {job.file && job.own && <a href={`/api/v1/jobs/file?id=${job.id}`}>{t("job.file")}</a>}
                            {job.reported && <a href={`/api/v1/jobs/report?id=${job.id}`}>{t("import.report")}</a>}
                            {job.failed > 0 && (
                                <a href={`/api/v1/jobs/report?failed=1&id=${job.id}`}>{t("import.failedrows")}</a>
                            )}
                        </div>
                    </li>
                ))}
            </ul>
        </details>
    );
}

/** A job that was begun here, until it is over. */
function Running(props: { id: number; onClose: () => void }) {
    const [job, setJob] = useState<Job>();
    const [trouble, setTrouble] = useState("");
    useEffect(() => {
        const look = () =>
            void listJobs().then(
                jobs => {
                    const present = jobs.find(one => one.id === props.id);
                    present && !present.over ? setJob(present) : props.onClose();
                },
                error => setTrouble(sentence(error)),
            );
        look();
        const end = watchProgress(look);
        const timer = setInterval(look, kPause);
        return () => {
            end();
            clearInterval(timer);
        };
    }, []);
    if (!job) {
        return <Trouble text={trouble} />;
    }
    return (
        <Dialog title={commandName(job.what.split(" "))} onClose={props.onClose}>
            <Trouble text={trouble} />
            <p role="status">
                <Progress job={job} />
            </p>
            <div class="buttons">
                {job.can_stop && <button onClick={() => stop(job.id)}>{t("import.stop")}</button>}
                <button onClick={props.onClose}>{t("job.background")}</button>
            </div>
        </Dialog>
    );
}

setShowJob(id => {
    awaited.add(id);
    openDialog(close => <Running id={id} onClose={close} />);
});
